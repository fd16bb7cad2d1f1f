// SPDX-License-Identifier: MIT
#include "qmini/Files.h"

#include "qmini/Command.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace qmini {

namespace {

std::string SafetyCopy(const std::string& file) { return file + ".qmini-save"; }

Failure SafetyCopyExists(const std::string& file)
{
    return {Failed, SafetyCopy(file) +
                        " exists: another qmini is editing the file, or one was interrupted. In "
                        "that case, keep whichever of the two files is whole"};
}

std::string SystemMessage() { return std::generic_category().message(errno); }

/// @return the content of a file, or nothing when it cannot be read
std::optional<std::string> TryReadFile(const std::string& file, std::ios::openmode mode)
{
    std::ifstream in(file, mode | std::ios::in);
    if (!in.is_open())
        return std::nullopt;
    std::string content;
    errno = 0; // tells a read error from the end of the file, which libc++ does not
    for (char block[1 << 16]; in.good();) {
        in.read(block, sizeof block);
        content.append(block, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad() || errno != 0) // a directory opens, but does not read
        return std::nullopt;
    return content;
}

/// Writes a text over the content of a file. The file is shortened last, not first: so long as it keeps its
/// size, a full disk leaves room for its former content.
/// @return what went wrong, if anything
std::optional<std::string> Overwrite(const std::string& file, const std::string& text,
                                     std::ios::openmode mode)
{
    std::fstream out(file, std::ios::in | std::ios::out | mode);
    out.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    const std::streamoff size = out.tellp(); // not the text's, where a newline takes two characters
    out.close();
    if (!out)
        return SystemMessage();
    std::error_code error;
    fs::resize_file(file, static_cast<std::uintmax_t>(size), error);
    if (error)
        return error.message();
    if (TryReadFile(file, mode) != text)
        return "it reads back differently";
    return std::nullopt;
}

} // namespace

std::string ReadFile(const std::string& file, std::ios::openmode mode)
{
    auto content = TryReadFile(file, mode);
    if (!content)
        throw Failure(Failed, "cannot read " + file + ": " + SystemMessage());
    return std::move(*content);
}

void RequireNoSafetyCopy(const std::string& file)
{
    std::error_code ignored;
    if (fs::exists(SafetyCopy(file), ignored))
        throw SafetyCopyExists(file);
}

void Rewrite(const std::string& file, const std::string& before, const std::string& text)
{
    if (!std::fstream(file, std::ios::in | std::ios::out).is_open())
        throw Failure(Failed, "cannot write " + file + ": " + SystemMessage());

    const std::string copy = SafetyCopy(file);
    std::error_code error;
    fs::copy_file(file, copy, error); // with the permissions of the file
    if (error == std::errc::file_exists)
        throw SafetyCopyExists(file);
    std::error_code ignored;
    if (error || TryReadFile(copy, std::ios::binary) != before) {
        fs::remove(copy, ignored);
        throw Failure(Failed, error ? "cannot write the safety copy " + copy + ": " + error.message()
                                    : file + " was changed by someone else meanwhile");
    }
    if (const auto problem = Overwrite(file, text, {})) {
        const std::string message = "cannot write " + file + ": " + *problem;
        if (Overwrite(file, before, std::ios::binary))
            throw Failure(Failed, message + ". Its former content is in " + copy);
        fs::remove(copy, ignored);
        throw Failure(Failed, message + ". It is as it was");
    }
    if (!fs::remove(copy, error))
        throw Failure(Failed, file + " is written, but its safety copy stays: " + copy);
}

Input::Input(const std::string& file, std::istream& standardInput)
try : Input(file) {
    std::error_code ignored;
    if (file != "-" && fs::is_regular_file(file, ignored))
        return;
    std::string text;
    if (file == "-") {
        m_name = "standard input";
        text.assign(std::istreambuf_iterator<char>(standardInput), {});
        if (standardInput.bad())
            throw Failure(Failed, "cannot read standard input");
    } else
        text = ReadFile(file);
    std::random_device random;
    fs::path folder;
    do
        folder = fs::temp_directory_path() / ("qmini-" + std::to_string(random()));
    while (!fs::create_directory(folder)); // false when someone else has a folder of that name
    m_folder = folder;
    fs::permissions(m_folder, fs::perms::owner_all);
    m_path = (m_folder / "input.ini").string();
    if (!(std::ofstream(m_path) << text << std::flush))
        throw Failure(Failed, "cannot write a temporary file in " + fs::temp_directory_path().string());
} catch (const fs::filesystem_error& error) {
    throw Failure(Failed, "cannot make a temporary file: " + error.code().message());
}

Input::~Input()
{
    std::error_code ignored;
    if (IsCopy())
        fs::remove_all(m_folder, ignored);
}

} // namespace qmini
