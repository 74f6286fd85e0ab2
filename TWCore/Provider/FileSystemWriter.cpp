#include "TWCore/Provider/FileSystemWriter.h"

namespace tw {

namespace {

[[noreturn]] void throwUnsupported(std::string const &place, char const *what)
{
    throw FileOperationError::Unsupported(std::string(what) + " on " + place);
}

} // namespace

Task<void> FileSystemWriter::moveAll(std::vector<Move> /*moves*/)
{
    throwUnsupported(displayName(), "moving");
}

Task<void> FileSystemWriter::removePermanently(std::vector<std::string> /*paths*/)
{
    throwUnsupported(displayName(), "deleting");
}

Task<FolderFacts> FileSystemWriter::factsAbout(std::string /*folder*/, std::vector<std::string> /*names*/)
{
    throwUnsupported(displayName(), "looking at a folder");
}

Task<Survey> FileSystemWriter::survey(std::string /*folder*/, std::vector<std::string> /*names*/)
{
    throwUnsupported(displayName(), "comparing");
}

Task<void> FileSystemWriter::sync(std::string /*folder*/)
{
    return nothingToDo();
}

} // namespace tw
