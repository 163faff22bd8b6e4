// Compiled modules written by Module::ZKC_put and read again: every example
// of the tree, generated modules and the worked module, with and without
// names, and the writer's own layout.

#include "model/module.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> examples()
{
    std::vector<std::string> names;
    for (const std::string& n : files_with_suffix(TARN_SOURCE_DIR "/examples", ".zkc"))
        names.push_back(TARN_SOURCE_DIR "/examples/" + n + ".zkc");
    return names;
}

Module* read(const std::string& file) { return read_module(file, false); }

std::string written(Module* m, int forgetNames)
{
    std::ostringstream out;
    m->ZKC_put(out, 0, 0, forgetNames);
    return out.str();
}

std::string debug(Module* m)
{
    std::ostringstream out;
    testing::internal::CaptureStderr();
    m->DEBUG_put(out);
    testing::internal::GetCapturedStderr();
    // The dump shows each equation's address; everything else must agree.
    std::string text = out.str();
    for (std::size_t at = text.find("(0x"); at != std::string::npos; at = text.find("(0x", at))
        text.erase(at, text.find(')', at) + 1 - at);
    return text;
}

}  // namespace

TEST(RoundTrip, EveryExampleAndGeneratedModuleReadsBackToTheSameModule)
{
    scratch_dir s;
    std::vector<std::string> files = examples();
    ASSERT_GE(files.size(), 3u);
    for (int seed : {1, 2, 3}) {
        generate_module(s.path, "g" + std::to_string(seed), 300 * seed, seed);
        files.push_back(s.path + "/g" + std::to_string(seed) + ".zkc");
    }
    const std::string worked = s.write("worked.zkc", worked_module_text);
    files.push_back(worked);
    int forgotten = 0;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        Module* original = read(file);
        ASSERT_NE(original, nullptr);
        std::string first = written(original, 0);
        Module* again = read(s.write("roundtrip.zkc", first));
        ASSERT_NE(again, nullptr);
        // The writer numbers variables in the order the reader makes them,
        // so a module read back is the same one, ids and names included.
        EXPECT_EQ(debug(again), debug(original));
        EXPECT_EQ(written(again, 0), first);
        if (file == worked) { // the writer's layout
            EXPECT_EQ(first.substr(0, first.find("equation_def:")),
                      "module: m  0 0\ninput: i ;\noutput: o ;\nlocal: n r;\nregister:\nn r 0;\n\n"
                      "connexion: SETm RESETm RTLm;\n\n");
        }

        // Without names, the locals are stable numbers and the equations
        // those of the original; a memorised line names its actual signal,
        // which has no name left.
        if (original->getPreSignalList() != nullptr && !original->getPreSignalList()->empty())
            continue;
        std::string numbered = written(original, 1);
        EXPECT_EQ(numbered.find("local:"), numbered.find("local:  V")) << numbered;
        if (file == worked) {
            EXPECT_EQ(numbered.substr(0, numbered.find("connexion:")),
                      "module: m  0 0\ninput: i ;\noutput: o ;\nlocal:  V4  V6;\nregister:\n V4 V6 0;\n\n");
        }
        again = read(s.write("roundtrip_forget.zkc", numbered));
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(written(again, 1), numbered);
        ++forgotten;
    }
    EXPECT_GT(forgotten, 0);
}
