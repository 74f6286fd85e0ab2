#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// A listing of any length that the host sends as fast as it is granted, see Pace.
///
/// The host passes the listing on through `head`, one run for each grant, and reads the grants from the session's
/// input. So no other request may be written between the request and the last grant, which is 0. A frame without a
/// payload of its own follows the last grant: if the listing was broken off, it ends what has come of it.
///
/// Some versions of `head` read more than they pass on. On a host with one of these the listing comes as fast as it
/// can, and the grants are only read.
namespace tw::PacedListing {

/// At which the host cuts the listing.
inline constexpr std::size_t mostBytes = 64U << 20U;

/// The request for the folder `path`, all lines of it. `nonce` is the session's.
std::string request(std::string_view nonce, std::uint64_t id, std::string_view path);

/// The line that grants `bytes`. 0: the last one; the host stops.
std::string grant(std::size_t bytes);

} // namespace tw::PacedListing
