#include "qmini/Commands.h"

#include <algorithm>
#include <iostream>

int main(int argc, char* argv[])
{
    return qmini::Run({argv + std::min(argc, 1), argv + argc}, std::cout, std::cerr);
}
