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
/// The path of the listing is not in the blob: a store of blobs has the path as its key.
namespace tw::SnapshotCodec {

/// The blob of a listing. It holds the names of this listing only: the listings of a scan of many folders share one
/// response, and each blob copies the names that it refers to. An entry whose name is empty or lies outside the
/// storage is left out. The time loses the fraction of its second.
///
/// More than 4 GiB of names, or more than 2^32 entries, are a bug and stop the process.
std::string encode(DirectorySnapshot const &snapshot);

/// The listing of a blob, or nothing if the blob is damaged or is no blob. No content of `bytes` is an error. Every
/// entry of the listing has a name that a file can have: not empty, not "." or "..", without a slash and without a NUL.
/// Bytes after the names are ignored.
///
/// Only the names are copied. To hold the blob instead would save the copy, and would hold the records too for as long
/// as the listing lives, unused and not counted by any budget of names. `bytes` need only last for the call.
std::optional<DirectorySnapshot> decode(std::string_view bytes, std::string path);

} // namespace tw::SnapshotCodec
