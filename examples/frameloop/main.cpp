#include "examples/frameloop/CommandLine.h"

#include <algorithm>
#include <csignal>
#include <iostream>

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void Interrupt(int /*signal*/) { interrupted = 1; }

} // namespace

int main(int argc, char* argv[])
{
    (void)std::signal(SIGINT, Interrupt);
    (void)std::signal(SIGTERM, Interrupt);
    return hostapp::Run({argv + std::min(argc, 1), argv + argc}, std::cout, std::cerr,
                        [] { return interrupted != 0; });
}
