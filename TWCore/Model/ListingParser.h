#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <map>
#include <string>
#include <string_view>

/// The stream that a host prints for a scan of a directory tree, and the paths that listings are known by.
///
/// A stream is a sequence of records, each ended by a NUL, of five fields with a TAB between them: the type letter, the
/// size, the modification time, the mode in octal, and the path relative to the scan's root. It is what
/// `find -printf '%y\t%s\t%T@\t%m\t%P\0'` prints.
namespace tw::ListingParser {

enum class Completeness {
    whole,
    truncated, ///< the host cut the stream at its size limit
};

/// The listings in a stream, by normalised absolute path; the root is always among them, even for an empty stream.
///
/// One pass, without a copy of a name: every entry points into `response`, which all snapshots share. An empty folder
/// inside the reach of the scan has a listing without entries; one at its edge has none, since nobody looked inside.
///
/// Nothing that a host can send is an error. Bytes that do not belong in a number are skipped, and a record that breaks
/// off ends the parse; what came before it stands. Of a truncated stream the folder found last is marked as truncated,
/// and with it all that lead to it: a walk of a tree goes back to them for what stands behind in them. So are folders
/// without entries behind the last one that has some: a walk by levels tells of folders long before it looks inside. A
/// last record without its NUL is dropped: half a name is the name of another file.
///
/// `maxDepth` is the depth that the scan was asked for. The response is at most 4 GiB.
std::map<std::string, DirectorySnapshot> parse(NameStorage response, std::string_view root, int maxDepth,
                                               std::chrono::system_clock::time_point fetchedAt,
                                               Completeness completeness);

/// The one form of a path that keys a listing: without trailing slashes. "/" stays "/", and "//" becomes it.
std::string normalize(std::string_view path);

} // namespace tw::ListingParser
