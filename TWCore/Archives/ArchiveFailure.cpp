#include "TWCore/Archives/ArchiveFailure.h"

#include "TWCore/Archives/ArchivePasswordError.h"

#include <algorithm>
#include <array>

namespace tw::ArchiveFailure {

namespace {

constexpr std::string_view question = "Enter passphrase";

/// "Break signaled": 7-Zip asks, and its input is at its end.
constexpr std::array asksForPassword{std::string_view("Wrong password"), std::string_view("Break signaled"), question,
                                     std::string_view("ncorrect passphrase")};

/// unzip opens the terminal, and there is none.
constexpr std::string_view asksAtTerminal = "unable to get password";

/// How unzip ends, without a word, at an encryption or a compression that it does not know.
constexpr std::string_view isUnknownToUnzip = "exit 81";

} // namespace

std::exception_ptr of(std::string const &operation, std::string const &path, std::string_view words)
{
    auto const areThere = [words](std::string_view each) { return words.contains(each); };
    if (std::ranges::any_of(asksForPassword, areThere))
        return std::make_exception_ptr(ArchivePasswordError(operation, path));
    if (words.contains(asksAtTerminal))
        return std::make_exception_ptr(FileOperationError::Unsupported(
            "it is encrypted, and unzip takes a password from a terminal only. Install the package 7zip."));
    if (words == isUnknownToUnzip)
        return std::make_exception_ptr(FileOperationError::Unsupported(
            "unzip does not know its encryption or compression. Install the package 7zip."));
    return std::make_exception_ptr(FileOperationError::Failed(operation, path, std::string(words)));
}

std::size_t questionsIn(std::string_view words)
{
    std::size_t count = 0;
    for (auto place = words.find(question); place != std::string_view::npos; place = words.find(question, place + 1))
        ++count;
    return count;
}

} // namespace tw::ArchiveFailure
