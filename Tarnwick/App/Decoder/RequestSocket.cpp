#include "Tarnwick/App/Decoder/RequestSocket.h"

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <unistd.h>

namespace tw::RequestSocket {

std::optional<PictureRequest> receive()
{
    char bytes[PictureRequest::mostBytes];
    int file = -1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)];
    iovec text{.iov_base = bytes, .iov_len = sizeof bytes};
    msghdr whole{};
    whole.msg_iov = &text;
    whole.msg_iovlen = 1;
    whole.msg_control = control;
    whole.msg_controllen = sizeof control;
    ssize_t length = 0;
    do
        length = ::recvmsg(STDIN_FILENO, &whole, 0);
    while (length < 0 && errno == EINTR);
    auto const *const header = length > 0 ? CMSG_FIRSTHDR(&whole) : nullptr;
    if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS)
        return std::nullopt;
    std::memcpy(&file, CMSG_DATA(header), sizeof file);
    if (::dup2(file, STDIN_FILENO) < 0)
        return std::nullopt;
    ::close(file);
    return PictureRequest::of(std::string(bytes, static_cast<std::size_t>(length)));
}

} // namespace tw::RequestSocket
