// SPDX-License-Identifier: MIT
#include "qmini/Command.h"

#include <algorithm>
#include <iostream>

int main(int argc, char* argv[])
{
    std::ios::sync_with_stdio(false); // standard input is read in blocks
    return qmini::Run({argv + std::min(argc, 1), argv + argc}, {std::cin, std::cout, std::cerr});
}
