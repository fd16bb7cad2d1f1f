#include "qmini/Files.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace qmini {

std::string ReadFile(const std::string& file)
{
    std::ifstream in(file);
    std::string content;
    std::array<char, 4096> block;
    while (in.read(block.data(), block.size()), in.gcount() > 0)
        content.append(block.data(), static_cast<std::size_t>(in.gcount()));
    if (!in.is_open() || in.bad()) // a directory opens, but does not read
        throw Failure(Failed, "cannot read " + file + ": " + std::generic_category().message(errno));
    return content;
}

void RequireWritable(const std::string& file)
{
    if (!std::fstream(file, std::ios::in | std::ios::out).is_open())
        throw Failure(Failed, "cannot write " + file + ": " + std::generic_category().message(errno));
}

TemporaryCopy::TemporaryCopy(const std::string& content)
try {
    std::random_device random;
    do
        m_folder = fs::temp_directory_path() / ("qmini-" + std::to_string(random()));
    while (!fs::create_directory(m_folder)); // false when someone else has a folder of that name
    fs::permissions(m_folder, fs::perms::owner_all);
    std::ofstream copy(Path());
    copy << content << std::flush;
    if (!copy) {
        fs::remove_all(m_folder);
        throw Failure(Failed, "cannot write a temporary copy in " + fs::temp_directory_path().string());
    }
} catch (const fs::filesystem_error& error) {
    throw Failure(Failed, "cannot make a temporary copy: " + error.code().message());
}

TemporaryCopy::~TemporaryCopy()
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

} // namespace qmini
