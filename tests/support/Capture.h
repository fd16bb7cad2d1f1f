// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#if defined(_WIN32)
#include "qmUtility/platform/Kernel.h"

#include <io.h>
#endif
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

/// Collects what is written to a descriptor, write by write.
class Capture {
public:
    explicit Capture(int descriptor) : m_descriptor(descriptor), m_original(dup(descriptor)) {
        // A channel that keeps the bounds of each write: one end to read from, one to write to.
#if defined(_WIN32)
        const std::string name = "\\\\.\\pipe\\qmUtility-" + std::to_string(GetCurrentProcessId());
        constexpr DWORD mode = PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE;
        void* const pipe =
            CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND, mode, 1, 0, 1 << 20, 0, nullptr);
        m_ends[0] = _open_osfhandle(reinterpret_cast<std::intptr_t>(pipe), _O_BINARY);
        m_ends[1] = open(name.c_str(), _O_WRONLY | _O_TEXT);
#else
        EXPECT_EQ(pipe2(m_ends, O_DIRECT), 0);
#endif
        EXPECT_NE(dup2(m_ends[1], descriptor), -1);
        close(m_ends[1]);
    }
    ~Capture() {
        dup2(m_original, m_descriptor);
        close(m_original);
        close(m_ends[0]);
    }
    Capture(const Capture&) = delete;

    /// Ends the capture.
    std::vector<std::string> Writes() {
        dup2(m_original, m_descriptor);
        std::vector<std::string> writes;
        std::string bytes(65536, '\0');
        for (long size = 0; (size = static_cast<long>(read(m_ends[0], bytes.data(), 65536))) > 0;) {
            writes.emplace_back(bytes, 0, static_cast<std::size_t>(size));
#if defined(_WIN32)
            EXPECT_EQ(std::ranges::count(writes.back(), '\n'), std::erase(writes.back(), '\r'));
#endif
        }
        return writes;
    }

private:
    int m_descriptor;
    int m_original;
    int m_ends[2]{};
};
