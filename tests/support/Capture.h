#pragma once

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

/// Collects what is written to a descriptor while it lives, write by write.
class Capture
{
public:
    explicit Capture(int descriptor) : m_descriptor(descriptor), m_original(dup(descriptor))
    {
        // Keeps the bounds of each write, which a pipe would not.
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, m_ends), 0);
        EXPECT_EQ(dup2(m_ends[1], descriptor), descriptor);
        close(m_ends[1]);
    }
    ~Capture()
    {
        dup2(m_original, m_descriptor);
        close(m_original);
        close(m_ends[0]);
    }
    Capture& operator=(Capture&&) = delete; // and with it every copy

    /// Ends the capture.
    std::vector<std::string> Writes()
    {
        dup2(m_original, m_descriptor);
        std::vector<std::string> writes;
        std::string bytes(65536, '\0');
        for (ssize_t size = 0; (size = read(m_ends[0], bytes.data(), bytes.size())) > 0;)
            writes.emplace_back(bytes, 0, size);
        return writes;
    }

private:
    int m_descriptor;
    int m_original;
    int m_ends[2]{};
};
