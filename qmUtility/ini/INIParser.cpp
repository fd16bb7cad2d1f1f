#include "qmUtility/ini/INIParser.h"

INIParser::INIParser() = default;
INIParser::INIParser(const INIParser&) = default;
INIParser& INIParser::operator=(const INIParser&) = default;
INIParser::~INIParser() = default;
