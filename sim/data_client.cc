#include "sim/data_client.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// The same buffer as the server's reads.
constexpr std::size_t reply_length = 1024;

// A connect that gives up after `wait_ms`.
int connect_within(const addrinfo* a, int wait_ms)
{
    int s = ::socket(a->ai_family, a->ai_socktype, a->ai_protocol);
    if (s < 0)
        return -1;
    int flags = ::fcntl(s, F_GETFL, 0);
    ::fcntl(s, F_SETFL, flags | O_NONBLOCK);
    int r = ::connect(s, a->ai_addr, a->ai_addrlen);
    if (r != 0 && errno == EINPROGRESS) {
        pollfd p{s, POLLOUT, 0};
        int soerr = 0;
        socklen_t len = sizeof soerr;
        if (::poll(&p, 1, wait_ms) == 1 && ::getsockopt(s, SOL_SOCKET, SO_ERROR, &soerr, &len) == 0 && soerr == 0)
            r = 0;
    }
    if (r != 0) {
        ::close(s);
        return -1;
    }
    ::fcntl(s, F_SETFL, flags);
    int one = 1;
    ::setsockopt(s, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    return s;
}

} // namespace

data_client::~data_client() { close(); }

bool data_client::connect(const std::string& host, const std::string& port, int wait_ms, std::string& error)
{
    close();
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    int r = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
    if (r != 0) {
        error = "cannot find " + host + " port " + port + ": " + ::gai_strerror(r);
        return false;
    }
    for (const addrinfo* a = found; a != nullptr && fd < 0; a = a->ai_next)
        fd = connect_within(a, wait_ms);
    ::freeaddrinfo(found);
    if (fd < 0) {
        error = "cannot connect to the data server at " + host + " port " + port;
        return false;
    }
    return true;
}

std::string data_client::ask(const std::string& request, int wait_ms)
{
    if (fd < 0)
        return "--";
    std::size_t sent = 0;
    while (sent < request.size()) {
        ssize_t n = ::send(fd, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) {
            close();
            return "--";
        }
        sent += static_cast<std::size_t>(n);
    }
    pollfd p{fd, POLLIN, 0};
    if (::poll(&p, 1, wait_ms) != 1)
        return "--";
    char buffer[reply_length];
    ssize_t n = ::recv(fd, buffer, sizeof buffer - 1, 0);
    if (n <= 0) {
        close();
        return "--";
    }
    return std::string(buffer, static_cast<std::size_t>(n));
}

void data_client::close()
{
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}
