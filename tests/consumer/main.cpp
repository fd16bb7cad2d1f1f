#include "ini/INIParser.h"

int main(int, char** arguments)
{
    const std::string path = std::string(arguments[0]) + ".ini";
    const bool isWritten = INIParser::Create(path) && INIParser::SetValue("Key", "value", "Section", path);
    return isWritten && INIParser::GetValue("Key", "Section", path) == "value" ? 0 : 1;
}
