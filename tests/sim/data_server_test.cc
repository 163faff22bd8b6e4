// mosk against the data server that tarn writes for a valued example
// (mosk_<m>.cc, built with user headers written here): the server starts
// mosk itself, as "mosk <m>.zkc <host> <port>", and mosk's values follow
// the module's meaning. A wrapper first on the server's PATH hands mosk
// 127.0.0.1 for the host and the reactions; every wait is bounded.

#include "tests/sim/mosk_agreement.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using c_reference::run;

// What every user of type integer writes, as shipped with the examples.
const std::string integer_user = read_file(TARN_SOURCE_DIR "/examples/user/mosk_data_user_integer.h");

// Builds the server of `module` and runs it on `reactions`; returns what
// mosk printed, or skips when this build of tarn has no such target.
std::string serve(const scratch_dir& s, const std::string& module, const std::string& user,
                  const std::string& reactions)
{
    run("cp '" TARN_SOURCE_DIR "/examples/" + module + ".zkc' '" + s.path + "'");
    tarn_output t = run_tarn_in(s.path, {module + ".zkc", "-valued_simul"});
    if (t.out.find("generation of ./mosk_" + module + ".cc") == std::string::npos)
        return "<no server>";
    s.write("mosk_data_user_integer.h", std::string(integer_user) + user);
    EXPECT_EQ(run("cd '" + s.path + "' && g++ -o server mosk_" + module + ".cc > gxx.txt 2>&1"), 0)
        << read_file(s.path + "/gxx.txt");
    s.write("r.txt", reactions);
    s.write("mosk", "#!/bin/sh\nexec '" + mosk_agreement::mosk +
                        "' \"$1\" 127.0.0.1 \"$3\" -input r.txt > mosk_out.txt 2> mosk_err.txt\n");
    run("chmod +x '" + s.path + "/mosk'");
    // The server ends when mosk closes the connexion.
    EXPECT_EQ(run("cd '" + s.path + "' && PATH='" + s.path +
                  "':\"$PATH\" timeout 30 ./server > server_out.txt 2> server_err.txt"),
              0)
        << read_file(s.path + "/server_err.txt");
    // mosk was started in the background: wait for its last line.
    run("for i in $(seq 1 50); do [ -s '" + s.path + "/mosk_out.txt' ] && break; sleep 0.1; done");
    EXPECT_EQ(read_file(s.path + "/mosk_err.txt"), "");
    return read_file(s.path + "/mosk_out.txt");
}

// sum: total = add_sat(pre total, inc, limit) whenever inc is present.
TEST(DataServer, SumThroughTheGeneratedServer)
{
    scratch_dir s;
    std::string printed = serve(s, "sum", "inline integer add_sat(integer a, integer b, integer l)"
                                          " { return a + b > l ? l : a + b; }\n",
                                "inc(30)\ninc(50)\ninc(40)\n\ninc(5)\n");
    if (printed == "<no server>")
        GTEST_SKIP() << "this build of tarn does not write the data server";
    // After the absent reaction the pre value is the type's zero, which
    // the module does not define: unknown.
    EXPECT_EQ(printed, "total(30)\ntotal(80)\ntotal(100)\n\ntotal(?)\n");
}

// peak: alarm on a sample above the C threshold (50), and peak =
// bump(sample, offset) on a sample above the best, which stays zero;
// offset is the user's constant, asked of the server.
TEST(DataServer, PeakTestsAndExternalConstantThroughTheGeneratedServer)
{
    scratch_dir s;
    std::string printed = serve(s, "peak",
                                "inline integer bump(integer a, integer b) { return a + b; }\n"
                                "const integer offset = 1000;\n",
                                "sample(10)\nsample(60)\n\nsample(3)\nsample(70)\n");
    if (printed == "<no server>")
        GTEST_SKIP() << "this build of tarn does not write the data server";
    EXPECT_EQ(printed, "peak(1010)\nalarm peak(1060)\n\npeak(1003)\nalarm peak(1070)\n");
}

} // namespace
