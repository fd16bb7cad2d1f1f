// SPDX-License-Identifier: MIT
#include "qmUtility/platform/StandardStream.h"
#include "qmini/Qmini.h"

#include <iostream>

int main(int argc, char* argv[]) {
    std::ios::sync_with_stdio(false);  // standard input is read in blocks
    platform::UseBinaryStreams();
    return qmini::Run({argv + (argc > 0 ? 1 : 0), argv + argc}, {std::cin, std::cout, std::cerr});
}
