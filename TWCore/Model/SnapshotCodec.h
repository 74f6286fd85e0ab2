#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <optional>
#include <string>
#include <string_view>

/// A listing as bytes, for a place where it outlives the process.
///
/// A blob has a header of 24 bytes, a record of 27 for each entry, and the names, packed in the order of the entries.
/// All integers are little-endian:
///
///     header  0 "TWS1" | 4 version, 1 | 5 truncated, 0 or 1 | 6 reserved, 2 bytes | 8 entries, u32
///             | 12 bytes of names, u32 | 16 seconds since 1970, i64
///     record  0 offset of the name, u32 | 4 its length, u32 | 8 size, i64 | 16 mtime, i64 | 24 mode, u16
///             | 26 letter of the kind
///
/// The path of the listing is not in it: whatever keeps blobs has it as their key.
namespace tw::SnapshotCodec {

/// The blob of a listing, which holds its own names only: of a scan of many folders, whose listings all share one
/// response, each blob takes out what it refers to. An entry whose name lies outside the storage is left out, and of
/// the time the fraction of its second.
///
/// More than 4 GiB of names, or more than 2^32 entries, are a bug and stop the process.
std::string encode(DirectorySnapshot const &snapshot);

/// The listing of a blob, or nothing if the blob is damaged or none. Nothing that it can hold is an error. Bytes behind
/// the names are ignored.
///
/// The one thing copied are the names. Holding the blob in place of them would save that, and would hold the records
/// for as long as the listing lives, unused and not counted by any budget of names. `bytes` need only last for the
/// call.
std::optional<DirectorySnapshot> decode(std::string_view bytes, std::string path);

} // namespace tw::SnapshotCodec
