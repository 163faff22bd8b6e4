#ifndef TARN_SIM_DATA_CLIENT_H
#define TARN_SIM_DATA_CLIENT_H

// The simulator's side of the data server: one TCP connexion, one request
// at a time ("MC,...", "BOP,...", "UOP,...", "CONST,...", each field ended
// by a comma), one reply per request, "--" for a value the server cannot
// give. The server marks the end of a reply by nothing but its arrival, so
// a reply is what one read brings within the wait.

#include <string>

class data_client {
public:
    data_client() = default;
    ~data_client();
    data_client(const data_client&) = delete;
    data_client& operator=(const data_client&) = delete;

    // Connects to `host` on `port`, waiting at most `wait_ms`. False with
    // a message in `error` when that fails.
    bool connect(const std::string& host, const std::string& port, int wait_ms, std::string& error);

    bool connected() const { return fd >= 0; }

    // Sends one request and returns the reply; "--" when there is no
    // connexion, when nothing comes within `wait_ms`, or when the server
    // closed (which ends the connexion).
    std::string ask(const std::string& request, int wait_ms = 2000);

    void close();

private:
    int fd = -1;
};

#endif
