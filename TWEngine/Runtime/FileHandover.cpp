#include "TWEngine/Runtime/FileHandover.h"

#include "TWEngine/Runtime/Uninterrupted.h"

#include <cstring>

#include <sys/socket.h>

namespace tw {

std::optional<FileHandover> FileHandover::create()
{
    int ends[2];
    // Its messages keep their bounds.
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return std::nullopt;
    return FileHandover(FileDescriptor(ends[0]), FileDescriptor(ends[1]));
}

bool FileHandover::send(std::string_view message, FileDescriptor const &file) const
{
    auto const number = file.get();
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof number)] = {};
    iovec text{.iov_base = const_cast<char *>(message.data()), .iov_len = message.size()};
    msghdr whole{};
    whole.msg_iov = &text;
    whole.msg_iovlen = 1;
    whole.msg_control = control;
    whole.msg_controllen = sizeof control;
    auto *const header = CMSG_FIRSTHDR(&whole);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof number);
    std::memcpy(CMSG_DATA(header), &number, sizeof number);
    auto const sent = uninterrupted([&] { return ::sendmsg(ours.get(), &whole, MSG_NOSIGNAL | MSG_DONTWAIT); });
    return sent == static_cast<ssize_t>(message.size());
}

} // namespace tw
