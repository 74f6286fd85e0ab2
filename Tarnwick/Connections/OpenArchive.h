#pragma once

#include "TWCore/Async/Executor.h"
#include "TWEngine/Archives/Archives.h"
#include "TWEngine/Browsing/Browser.h"
#include "Tarnwick/Connections/ConnectionItem.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

/// An archive file, and the place in which it lies.
struct ArchiveFile {
    std::shared_ptr<Browser> holder; ///< of the place: this machine, a host, or another archive
    std::string connection;          ///< of the holder
    std::string path;

    std::string name() const { return path.substr(path.rfind('/') + 1); }

    std::string folder() const { return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)); }
};

/// Gives the Browser of the inside of an archive, of which nothing is read yet. Null: this archive cannot be opened.
using ArchiveOpener = std::function<std::shared_ptr<Browser>(ArchiveFile const &file)>;

/// An archive that panes are in, or are on their way into.
///
/// Threads: main context only.
/// Lifetime: shared by those panes. When the last one has left, what still reads the archive is ended, and the members
/// are forgotten.
class OpenArchive {
public:
    /// `outer` is the archive in which the file lies; null: none.
    OpenArchive(std::shared_ptr<Executor> mainContext, ArchiveFile file, std::shared_ptr<Browser> inside,
                std::shared_ptr<OpenArchive const> outer);
    ~OpenArchive();

    OpenArchive(OpenArchive const &) = delete;
    OpenArchive &operator=(OpenArchive const &) = delete;

    ArchiveFile const &file() const noexcept { return archive; }

    std::shared_ptr<Browser> const &inside() const noexcept { return browser; }

    std::shared_ptr<OpenArchive const> const &outer() const noexcept { return around; }

    /// The file that lies in a folder and in no archive.
    ArchiveFile const &outermost() const noexcept { return around ? around->outermost() : archive; }

    /// Whether tools of this machine can change the archive.
    bool isChangeable() const { return !around && archive.connection == localConnection; }

    /// What a pane in it has for a connection. No two archives have the same.
    std::string connection() const { return archive.connection + ":" + archive.path; }

    /// The same for display, where a name says enough.
    std::string title() const;

    /// The archive file as a tool gets it: of one inside another, its copy on this machine.
    static Task<TransferEndpoint> endpoint(std::shared_ptr<OpenArchive const> self);

    /// What an archive engine is given for members at these paths.
    static Task<Archives::Members> members(std::shared_ptr<OpenArchive const> self, std::vector<std::string> paths);

    /// The next question lists the archive anew.
    static Task<void> forget(std::shared_ptr<OpenArchive const> self);

    /// Remembers the size and the time of the archive file, which is being listed. A file inside another archive has
    /// none that could change.
    static Task<void> noteFile(std::weak_ptr<OpenArchive const> weak);

    /// Has the archive listed anew by the next fetch if the file has another size or time than it had then. The Browser
    /// keeps what it knows, so that it can say what is new.
    static Task<void> forgetIfChanged(std::shared_ptr<OpenArchive const> self);

private:
    struct Stamp {
        std::int64_t size;
        std::int64_t mtime;

        friend bool operator==(Stamp const &, Stamp const &) = default;
    };

    static Task<std::optional<Stamp>> stampOf(ArchiveFile file);

    std::shared_ptr<Executor> const executor;
    ArchiveFile const archive;
    std::shared_ptr<Browser> const browser;
    std::shared_ptr<OpenArchive const> const around;

    mutable std::optional<Stamp> listed; ///< of the file when it was listed; nothing if that is unknown
};

} // namespace tw
