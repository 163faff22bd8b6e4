// The simulator's data server as g++ builds it and as the simulator talks
// to it: the mosk_<m>.cc of every valued example (and of a module with a
// boolean type, and of one without data) compiles against user headers
// written here and, started with a stand-in simulator first on its PATH,
// answers each request of that stand-in over loopback as its text says,
// then ends with status 0 once the stand-in closes the connexion; started
// with the real mosk, it gives mosk the values of the module's meaning.

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using c_reference::run;

// The stand-in simulator: started by the server as "mosk <application>
// <host> <port> &", it connects to 127.0.0.1 on that port, sends each line
// of requests.txt as one request and writes the reply (or "<no reply>"
// after a second) as one line of mosk_log.txt, then closes.
const char* stand_in = R"(#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

int main(int argc, char** argv)
{
    alarm(20);
    std::FILE* log = std::fopen("mosk_log.txt", "w");
    if (log == nullptr || argc != 4)
        return 1;
    std::fprintf(log, "application %s\n", argv[1]);
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(std::atoi(argv[3]));
    inet_pton(AF_INET, "127.0.0.1", &server.sin_addr);
    if (connect(fd, reinterpret_cast<sockaddr*>(&server), sizeof server) != 0)
        return std::fprintf(log, "no connexion\n"), 1;
    std::ifstream requests("requests.txt");
    for (std::string request; std::getline(requests, request);) {
        send(fd, request.data(), request.size(), 0);
        pollfd ready{fd, POLLIN, 0};
        char buffer[2048];
        long n = poll(&ready, 1, 1000) > 0 ? recv(fd, buffer, sizeof buffer, 0) : -2;
        std::string reply = n == -2 ? "<no reply>" : n > 0 ? std::string(buffer, n) : "<closed>";
        std::fprintf(log, "%s\n", reply.c_str());
    }
    std::fprintf(log, "closed\n");
    std::fclose(log);
    close(fd);
    return 0;
}
)";

// What every user of type integer writes, as shipped with the examples.
const std::string integer_user = read_file(TARN_SOURCE_DIR "/examples/user/mosk_data_user_integer.h");

// The user of type bool: string_to_bool is the server's own.
const char* bool_user = R"(#include <string>
inline bool check_bool(const std::string& s) { return s == "true" || s == "false"; }
inline std::string bool_to_string(bool b) { return b ? "true" : "false"; }
)";

using exchange = std::pair<std::string, std::string>; // request, reply

struct server_case {
    std::string file;
    std::string zkc; // empty for the example of that name
    std::vector<std::pair<std::string, std::string>> user_headers; // type, text
    std::vector<exchange> exchanges;
    bool warning_free = true; // g++ builds the server without a warning
    std::string reactions = "", printed = ""; // for mosk, and what it prints
};

std::string stand_in_binary() { return c_reference::built_once("mosk.cc", stand_in, "", "mosk"); }

// Writes the server and builds it; then runs it with the stand-in first on
// its PATH and checks the stand-in's log; then, given reactions, with the
// real mosk behind a wrapper that hands it "-server 127.0.0.1:<port>", and
// checks what mosk printed. The server ends when its client closes; a hung
// one is stopped.
void check_replies(const scratch_dir& s, const server_case& x)
{
    SCOPED_TRACE(x.file);
    c_reference::place_module(s, x.file, x.zkc);
    tarn_output made = run_tarn_in(s.path, {x.file + ".zkc", "-valued_simul"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_NE(made.out.find("generation of ./mosk_" + x.file + ".cc\n"), std::string::npos) << made.out;
    for (const auto& h : x.user_headers)
        s.write("mosk_data_user_" + h.first + ".h", h.second);
    std::string stand_in = stand_in_binary();
    int built = run("cd '" + s.path + "' && LC_ALL=C g++ -Wall -o server mosk_" + x.file +
                    ".cc 2> server_gxx.txt && cp '" + stand_in + "' mosk");
    ASSERT_EQ(built, 0) << read_file(s.path + "/server_gxx.txt");
    ASSERT_FALSE(stand_in.empty());
    if (x.warning_free) {
        EXPECT_EQ(read_file(s.path + "/server_gxx.txt"), "");
    }
    std::string requests, expected = "application " + x.file + ".zkc\n";
    for (const exchange& e : x.exchanges) {
        requests += e.first + "\n";
        expected += e.second + "\n";
    }
    s.write("requests.txt", requests);
    const std::string serve = "cd '" + s.path + "' && PATH=\"$BIN:$PATH\" timeout 30 ./server > server_out.txt 2> "
                              "server_err.txt";
    EXPECT_EQ(run("BIN='" + s.path + "' && " + serve), 0) << read_file(s.path + "/server_err.txt");
    EXPECT_EQ(read_file(s.path + "/mosk_log.txt"), expected + "closed\n");
    if (x.reactions.empty())
        return;
    // The real mosk in a folder of its own: the stand-in may still be ending.
    s.write("r.txt", x.reactions);
    ASSERT_EQ(run("mkdir '" + s.path + "/real'"), 0);
    s.write("real/mosk", "#!/bin/sh\n'" TARN_BINARY_DIR "/sim/mosk' \"$1\" -server \"127.0.0.1:$3\" -input r.txt "
                         "> mosk_out.txt 2> mosk_err.txt\ntouch mosk_done\n");
    run("chmod +x '" + s.path + "/real/mosk'");
    EXPECT_EQ(run("BIN='" + s.path + "/real' && " + serve), 0) << read_file(s.path + "/server_err.txt");
    // mosk was started in the background: wait for its end.
    run("for i in $(seq 1 200); do [ -e '" + s.path + "/mosk_done' ] && break; sleep 0.1; done");
    EXPECT_EQ(read_file(s.path + "/mosk_err.txt"), "");
    EXPECT_EQ(read_file(s.path + "/mosk_out.txt"), x.printed);
}

// The valued examples; a boolean type, which shows the two operators whose
// operands are read as the text stands, with methods and external
// constants of two types; and a module without types, where every check
// fails and the server still builds without any user header.
TEST(DataServer, ServersAnswerTheStandInSimulator)
{
    std::string add_sat = "inline integer add_sat(integer a, integer b, integer l) { return a + b > l ? l : a + b; }\n";
    const server_case cases[] = {
        {"accu",
         "",
         {{"integer", std::string(integer_user) + add_sat + "const integer limit = 100;\n"}},
         {
             // The operator code comes from the type table alone, the same
             // in every server of a module over integer: asked of accu's.
             {"BOP,3,integer, + ,4,integer,", "7"},
             {"BOP,9,integer, - ,4,integer,", "5"},
             {"BOP,9,integer, * ,4,integer,", "36"},
             {"BOP,9,integer, / ,4,integer,", "2"},
             {"BOP,3,integer, == ,3,integer,", "true"},
             {"BOP,3,integer, != ,3,integer,", "false"},
             {"BOP,4,integer, < ,4,integer,", "false"},
             {"BOP,4,integer, <= ,4,integer,", "true"},
             {"BOP,4,integer, > ,4,integer,", "false"},
             {"BOP,4,integer, >= ,4,integer,", "true"},
             // Operands of two types, an unknown type, a value that fails its
             // check, an unknown operator.
             {"BOP,3,integer, + ,4,real,", "--"},
             {"BOP,3,real, + ,4,real,", "--"},
             {"BOP,3,integer, + ,four,integer,", "--"},
             {"BOP,3,integer, % ,4,integer,", "--"},
             // Without its final comma the right type is lost: the types differ.
             {"BOP,3,integer, + ,4,integer", "--"},
             // The conjunction reads the type field for its left operand.
             {"BOP,1,integer, && ,1,integer,", "false"},
             {"BOP,1,integer, | ,1,integer,", "false"},
             // The negation comes back as text; the boolean negation of a value
             // that is not "true" is true.
             {"UOP, -,5,integer,", " -5"},
             {"UOP, !,5,integer,", "true"},
             {"UOP, ~,5,integer,", "--"},
             {"UOP, -,five,integer,", "--"},
             {"MC,add_sat,60,30,100,", "90"},
             {"MC,add_sat,60,50,100,", "100"},
             {"MC,add_sat,60,x,100,", "--"},
             // The last argument is lost with its comma.
             {"MC,add_sat,60,30,100", "--"},
             {"CONST,limit,", "100"},
         }},
        {"sum",
         "",
         {{"integer", std::string(integer_user) + add_sat}},
         {
             {"MC,add_sat,1,2,100,", "3"},
             // limit has its value in the module: the server has no branch
             // for it and sends nothing.
             {"CONST,limit,", "<no reply>"},
             {"MC,add_sat,1,2,", "--"},
         },
         true,
         // mosk: an absent total holds its type's zero, which the module
         // does not define: unknown from then on, and nothing is asked.
         "inc(30)\ninc(50)\ninc(40)\n\ninc(5)\n",
         "total(30)\ntotal(80)\ntotal(100)\n\ntotal(?)\n"},
        {"peak",
         "",
         {{"integer", std::string(integer_user) + "inline integer bump(integer a, integer b) { return a + b; }\n"
                                                  "const integer offset = 1000;\n"}},
         {
             {"MC,bump,5,-8,", "-3"},
             {"CONST,offset,", "1000"},
             {"CONST,offset", "<no reply>"},
         },
         true,
         // mosk: alarm above the C threshold (50); peak = bump(sample,
         // offset) above the best, which stays zero.
         "sample(10)\nsample(60)\n\nsample(3)\nsample(70)\n",
         "peak(1010)\nalarm peak(1060)\n\npeak(1003)\nalarm peak(1070)\n"},
        {"flags",
         "module: flags 0 0 connexion: S R T; equation_def: 0 expressions: end:\n"
         "data: type: bool; integer;\n"
         "method: bool odd(integer); integer pick(bool, integer, integer);\n"
         "constant: bool yes; integer many;\nend:\n",
         {{"bool", bool_user},
          {"integer", std::string(integer_user) + "inline bool odd(integer v) { return v % 2 != 0; }\n"
                                                 "inline integer pick(bool b, integer t, integer e) "
                                                 "{ return b ? t : e; }\n"
                                                 "const bool yes = true;\nconst integer many = 12;\n"}},
         {
             {"BOP,true,bool, && ,true,bool,", "false"},
             {"BOP,true,bool, | ,false,bool,", "true"},
             {"BOP,false,bool, | ,false,bool,", "false"},
             {"BOP,true,bool, == ,true,bool,", "true"},
             {"BOP,true,bool, + ,true,bool,", "true"},
             {"BOP,true,bool, == ,maybe,bool,", "--"},
             {"UOP, !,true,bool,", "false"},
             {"UOP, !,maybe,bool,", "--"},
             {"MC,odd,3,", "true"},
             {"MC,odd,true,", "--"},
             {"MC,pick,false,1,2,", "2"},
             {"MC,pick,1,1,2,", "--"},
             {"CONST,yes,", "true"},
             {"CONST,many,", "12"},
         },
         false}, // the product of two booleans draws a warning
        {"toggle", "", {}, {{"BOP,3,integer, + ,4,integer,", "--"}, {"UOP, !,true,bool,", "--"}}},
    };
    for (const server_case& x : cases) {
        scratch_dir s;
        check_replies(s, x);
    }
}

} // namespace
