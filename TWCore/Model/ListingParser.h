#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <map>
#include <string>
#include <string_view>

/// Parses the stream that a host prints for a scan of a directory tree.
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
/// One pass that copies no name: every entry points into `response`, which all snapshots share. An empty folder inside
/// the depth of the scan has a listing without entries; a folder at its edge has no listing, since the scan did not
/// read it.
///
/// Nothing that a host can send is an error. Bytes that do not belong in a number are skipped. An incomplete record
/// ends the parse; the records before it are kept. In a truncated stream, the last folder with entries and its parents
/// are marked as truncated: a depth-first walk returns to the parents for their other entries. Folders without entries
/// after that folder are marked too: a walk by levels prints folders long before it reads them. A last record without
/// its NUL is dropped: half a name is the name of another file.
///
/// `maxDepth` is the depth that the scan was asked for. The response is at most 4 GiB.
std::map<std::string, DirectorySnapshot> parse(NameStorage response, std::string_view root, int maxDepth,
                                               std::chrono::system_clock::time_point fetchedAt,
                                               Completeness completeness);

/// The path that a listing is keyed by: without trailing slashes. "/" stays "/", and "//" becomes "/".
std::string normalize(std::string_view path);

} // namespace tw::ListingParser
