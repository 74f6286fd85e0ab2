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
        std::string identity = {};           ///< another one for another file of that name; empty: not known

        friend bool operator==(Facts const &, Facts const &) = default;
    };

    virtual ~ViewedFile() = default;

    /// What the path leads to, now. Opens nothing.
    virtual Task<Facts> look() = 0;

    /// Up to `length` bytes from `offset` on: fewer at the end of the file. A host answers nothing, too, for a file
    /// that it cannot read; `look` says which it is.
    virtual Task<std::string> read(std::int64_t offset, std::size_t length) = 0;

    /// Where something is in a part of the file, found where the file is if the place can do that; a host also says
    /// what is around it. Bounded by the part, and on a host by `farthest`; a long search there reports its progress,
    /// on the executor of the caller and not after it was stopped.
    ///
    /// Cancellation: ends the search on a host, too.
    /// Throws ByteExpression::TooSlow, and FileSearch::Failed if a host cannot search the file.
    virtual Task<FileSearch::Found> find(FileSearch::Question question, FileSearch::Progress progress = {}) = 0;

    /// Waits until the facts differ from `known`; without `known`, they are answered at once. This machine reports a
    /// change when it happens; another place is asked now and then, and never connected for it. A file that has gone
    /// may come back for some seconds, as a log does that is begun anew; then ReadError is thrown.
    virtual Task<Facts> next(std::optional<Facts> known) = 0;

    /// The engine outlives the file.
    static std::shared_ptr<ViewedFile> at(EngineRuntime &engine, std::shared_ptr<FileSystemReader> place,
                                          std::string path);
};

} // namespace tw
