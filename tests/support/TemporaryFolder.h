// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

/// @return the text with each byte as the `wchar_t` of the same value.
inline std::wstring Widen(const std::string& bytes) {
    std::wstring wide;
    for (const char c : bytes) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

/// A test with a folder of its own, which is removed afterwards.
class TemporaryFolder : public testing::Test {
    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("qmUtility-" + std::to_string(std::random_device()()));

protected:
    TemporaryFolder() { std::filesystem::create_directory(m_folder); }
    ~TemporaryFolder() override { std::filesystem::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }
    std::wstring WidePath(const std::string& name) const { return (m_folder / name).wstring(); }

    /// Writes a file as text and returns its path.
    std::string Write(const std::string& text, const std::string& name = "test.ini") const {
        std::ofstream(Path(name)) << text;
        return Path(name);
    }

    static std::string Read(const std::filesystem::path& path, std::ios::openmode mode = std::ios::in) {
        std::ifstream file(path, mode);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string m_path = Path("test.ini");  ///< what `Write` writes unless it is told another
    const std::wstring m_widePath = WidePath("test.ini");
};
