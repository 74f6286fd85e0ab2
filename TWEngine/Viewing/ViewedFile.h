#pragma once

#include "TWCore/Async/Task.h"
#include "TWCore/Model/Entry.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWCore/Shell/FileSearch.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// A file that is looked into, on any place whose files can be read.
///
/// Threads: may be used from anywhere.
/// Lifetime: shared; an operation in flight keeps what it needs.
/// Errors: ReadError for a file that is missing or may not be read, and what the place throws.
class ViewedFile {
public:
    struct Facts {
        EntryKind kind = EntryKind::unknown; ///< of what the links lead to
        std::int64_t size = 0;               ///< bytes
    };

    virtual ~ViewedFile() = default;

    /// What the path leads to, now. Opens nothing.
    virtual Task<Facts> look() = 0;

    /// Up to `length` bytes from `offset` on: fewer at the end of the file. A host answers nothing, too, for a file
    /// that it cannot read; `look` says which it is.
    virtual Task<std::string> read(std::int64_t offset, std::size_t length) = 0;

    /// Where `bytes` are in a part of the file, found where the file is if the place can do that. Bounded by the part.
    virtual Task<std::optional<std::int64_t>> find(std::string bytes, FileSearch::Part part,
                                                   FileSearch::Which which) = 0;

    /// The engine outlives the file.
    static std::shared_ptr<ViewedFile> at(EngineRuntime &engine, std::shared_ptr<FileSystemReader> place,
                                          std::string path);
};

} // namespace tw
