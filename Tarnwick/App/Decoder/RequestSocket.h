#pragma once

#include "TWEngine/Preview/PictureRequest.h"

#include <optional>

/// The socket that is the standard input of a decoder until it has its request.
namespace tw::RequestSocket {

/// Waits for the request and puts its file in the place of the socket. Nothing if the program has ended, or does not
/// want a picture any more.
std::optional<PictureRequest> receive();

} // namespace tw::RequestSocket
