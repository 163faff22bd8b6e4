// The data server's client: requests as the protocol spells them, one
// reply each, "--" and silence as unknown values, over loopback with a
// stand-in server written here; and mosk's message when no server
// answers.

#include "sim/data_client.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

// A socket bound to a free port of 127.0.0.1, and that port.
int loopback_socket(std::string& port)
{
    int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    if (::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
        ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) != 0)
        ADD_FAILURE() << "no loopback socket";
    port = std::to_string(ntohs(a.sin_port));
    return s;
}

// A server of one client on 127.0.0.1: each read is one request, answered
// by `answer` (an empty answer sends nothing). Every wait is bounded; the
// requests are there once the client has closed.
struct stand_in_server {
    explicit stand_in_server(std::function<std::string(const std::string&)> answer)
    {
        listener = loopback_socket(port);
        EXPECT_EQ(::listen(listener, 5), 0);
        worker = std::thread([this, answer] {
            pollfd p{listener, POLLIN, 0};
            if (::poll(&p, 1, 20000) != 1)
                return;
            int client = ::accept(listener, nullptr, nullptr);
            char buffer[1024];
            for (pollfd q{client, POLLIN, 0}; ::poll(&q, 1, 20000) == 1;) {
                long n = ::recv(client, buffer, sizeof buffer - 1, 0);
                if (n <= 0)
                    break;
                received.emplace_back(buffer, static_cast<std::size_t>(n));
                std::string reply = answer(received.back());
                if (!reply.empty())
                    ::send(client, reply.data(), reply.size(), MSG_NOSIGNAL);
            }
            ::close(client);
        });
    }
    ~stand_in_server()
    {
        requests();
        ::close(listener);
    }
    const std::vector<std::string>& requests()
    {
        if (worker.joinable())
            worker.join();
        return received;
    }
    std::string port;
    int listener;
    std::thread worker;
    std::vector<std::string> received;
};

TEST(DataClient, OneReplyPerRequestAndUnknownWhenThereIsNone)
{
    stand_in_server server([](const std::string& request) -> std::string {
        if (request == "CONST,silent,")
            return "";
        if (request == "CONST,k,")
            return "42";
        return "--";
    });
    data_client client;
    std::string error;
    ASSERT_TRUE(client.connect("127.0.0.1", server.port, 3000, error)) << error;
    EXPECT_EQ(client.ask("CONST,k,"), "42");
    EXPECT_EQ(client.ask("BOP,1,integer, + ,x,integer,"), "--");
    EXPECT_EQ(client.ask("CONST,silent,", 300), "--");
    EXPECT_EQ(client.ask("CONST,k,"), "42");
    client.close();
    EXPECT_EQ(client.ask("CONST,k,"), "--");
    EXPECT_EQ(server.requests(),
              (std::vector<std::string>{"CONST,k,", "BOP,1,integer, + ,x,integer,", "CONST,silent,", "CONST,k,"}));
}

TEST(DataClient, RefusedConnexionIsAMessage)
{
    // A port just closed is a port where nobody listens.
    std::string port;
    ::close(loopback_socket(port));
    data_client client;
    std::string error;
    EXPECT_FALSE(client.connect("127.0.0.1", port, 1000, error));
    EXPECT_EQ(error, "cannot connect to the data server at 127.0.0.1 port " + port);
    EXPECT_EQ(client.ask("CONST,k,"), "--");

    scratch_dir dir;
    copy_example(dir.path, "sum");
    tarn_output r = run_mosk_in(dir.path, {"sum.zkc", "127.0.0.1", port}, "inc(1)\n");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find("mosk: cannot connect to the data server at 127.0.0.1 port " + port), std::string::npos);
}

} // namespace
