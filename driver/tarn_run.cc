#include "driver/tarn_run.h"

#include "driver/tarn_output.h"

#include "context/compilation.h"
#include "model/module.h"
#include "support/Stringpp.h"
#include "support/async_file.h"
#include "support/g_time.h"
#include "support/text_out.h"
#include "zkc/zkc_input.h"

#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

std::string tarn_version() { return std::string("3.4.3") + "-4"; }

std::string tarn_help_banner(const std::string& version)
{
    // The banner names options that are refused ("-sc", "-zkc",
    // "-template_valued_simul", "no_suppress_wires" without its dash) and
    // leaves out "-systemc", which is accepted. It stays as users know it.
    // A line ending in "\n\n" is followed by an empty line.
    return "\n"
           "        TARN: BRAm Finalizer\n"
           "        auteur Q. Tessel & M. Varne , version " + version + "\n\n"
           "   syntax:\n\n"
           "         tarn <filename> [no_suppress_wires]\n"
           "                         [-sc] [-doc] [-lustre] [-esterel] [-nusmv]\n"
           "                         [-valued_simul] [-blif] [-zkc] [-vhdl] [-altera] [-c] [-csharp ] [-qsr]\n\n"
           "         OR tarn -v\n\n"
           "         OR tarn -h\n\n"
           "   options:\n\n"
           "      -h : this help\n\n"
           "      -v : version of finaliser\n\n"
           "      -no_suppress_wires : deactivate control wires suppression\n\n"
           "      -doc : generate a documentation file \n\n"
           "      -lustre : generate a LUSTRE node\n\n"
           "      -esterel : generate an ESTEREL module\n\n"
           "      -nusmv : generate an NUSMV file\n\n"
           "      -blif : generate a file in blif format \n\n"
           "      -vhdl : generate a file in vhdl format\n\n"
           "      -altera : same as -vhdl option\n"
           "                more useful for the ALTERA synthetisers\n\n"
           "      -c : generate an automaton in c language\n"
           "           (generate an .h file too)\n\n"
           "      -valued_simul : generate a c++ user file for mosk simulator\n"
           "      -template_valued_simul : generate a c++ template user file for mosk simulator\n"
           "           (generate an .h file too)\n\n"
           "      -csharp : generate an automaton in c# language\n\n"
           "      -qsr : generate an encapsulated quasar file\n";
}

namespace {

struct tarn_option {
    const char* text;
    int tarn_flags::*flag;
    int tarn_flags::*second_flag;  // "-altera" also asks for the VHDL file
};

// Compared in this order, exactly.
const tarn_option options[] = {
    {"-no_suppress_wires", &tarn_flags::noSuppressWiresFlag, nullptr},
    {"-valued_simul", &tarn_flags::valuedSimulFlag, nullptr},
    {"-doc", &tarn_flags::docFlag, nullptr},
    {"-lustre", &tarn_flags::lustreFlag, nullptr},
    {"-esterel", &tarn_flags::esterelFlag, nullptr},
    {"-nusmv", &tarn_flags::nusmvFlag, nullptr},
    {"-blif", &tarn_flags::blifFlag, nullptr},
    {"-c", &tarn_flags::cFlag, nullptr},
    {"-vhdl", &tarn_flags::vhdlFlag, nullptr},
    {"-altera", &tarn_flags::vhdlFlag, &tarn_flags::alteraFlag},
    {"-systemc", &tarn_flags::systemcFlag, nullptr},
    {"-csharp", &tarn_flags::csharpFlag, nullptr},
    {"-qsr", &tarn_flags::qsrFlag, nullptr},
};

struct tarn_output {
    const char* separator;
    const char* suffix;  // null: no such file
};

// A generator writes into the open files of its target, in table order.
using tarn_put = void (*)(Module* module, const tarn_flags& flags, std::ostream* files[2]);
// The VHDL generator writes into the temporary file of the post-pass.
using tarn_vhdl_put = void (*)(Module* module, const tarn_flags& flags, std::ostream& tmp,
                               std::ifstream& libs);

struct tarn_target {
    const char* name;  // for the message of a target without generator
    int tarn_flags::*flag;
    int tarn_flags::*other_flag;  // either flag asks for the target
    tarn_output files[2];
    tarn_put put;
    tarn_vhdl_put vhdl_put;
};

// The order of generation, which is the order of the "generation of" lines.
// Each generator is the module's *_put of its target:
//   SIMUL_ZKC_put(out), DOC_put(out, templateFlag),
//   ESTEREL_put(out, templateFlag), LUSTRE_put(out, templateFlag),
//   NUSMV_put(out, templateFlag, !noSuppressWiresFlag),
//   BLIF_put(out, !noSuppressWiresFlag), C_put(outC, outH), CSharp_put(out),
//   VHDL_put(tmp, libs, alteraFlag), SYSTEMC_put(outCc, outH),
//   ENCAPSULATEDQSR_put(out).
// A null generator is one this build does not have yet.
const tarn_target targets[] = {
    {"mosk simulator", &tarn_flags::valuedSimulFlag, nullptr, {{"/mosk_", ".cc"}, {"", nullptr}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->SIMUL_ZKC_put(*files[0]); }, nullptr},
    {"documentation", &tarn_flags::docFlag, nullptr, {{"/", ".doc"}, {"", nullptr}},
     [](Module* m, const tarn_flags& f, std::ostream* files[2]) { m->DOC_put(*files[0], f.templateFlag); }, nullptr},
    {"Esterel", &tarn_flags::esterelFlag, nullptr, {{"/", ".strl"}, {"", nullptr}},
     [](Module* m, const tarn_flags& f, std::ostream* files[2]) { m->ESTEREL_put(*files[0], f.templateFlag); },
     nullptr},
    {"Lustre", &tarn_flags::lustreFlag, nullptr, {{"/", ".lus"}, {"", nullptr}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->LUSTRE_put(*files[0], 0); }, nullptr},
    {"NuSMV", &tarn_flags::nusmvFlag, nullptr, {{"/", ".smv"}, {"", nullptr}},
     [](Module* m, const tarn_flags& f, std::ostream* files[2]) { m->NUSMV_put(*files[0], 0, !f.noSuppressWiresFlag); },
     nullptr},
    {"BLIF", &tarn_flags::blifFlag, nullptr, {{"/", ".blif"}, {"", nullptr}},
     [](Module* m, const tarn_flags& f, std::ostream* files[2]) { m->BLIF_put(*files[0], !f.noSuppressWiresFlag); },
     nullptr},
    {"C", &tarn_flags::cFlag, nullptr, {{"/", ".c"}, {"/", ".h"}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->C_put(*files[0], *files[1]); }, nullptr},
    {"C#", &tarn_flags::csharpFlag, nullptr, {{"/", ".cs"}, {"", nullptr}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->CSharp_put(*files[0]); }, nullptr},
    {"VHDL", &tarn_flags::vhdlFlag, &tarn_flags::alteraFlag, {{"/", ".vhd"}, {"", nullptr}}, nullptr,
     [](Module* m, const tarn_flags& f, std::ostream& tmp, std::ifstream& libs) {
         m->VHDL_put(tmp, libs, f.alteraFlag);
     }},
    {"SystemC", &tarn_flags::systemcFlag, nullptr, {{"/", "_sc.cc"}, {"/", "_sc.h"}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->SYSTEMC_put(*files[0], *files[1]); }, nullptr},
    {"encapsulated qsr", &tarn_flags::qsrFlag, nullptr, {{"/", "_encapsulated.qsr"}, {"", nullptr}},
     [](Module* m, const tarn_flags&, std::ostream* files[2]) { m->ENCAPSULATEDQSR_put(*files[0]); }, nullptr},
};

bool requested(const tarn_target& t, const tarn_flags& flags)
{
    return flags.*t.flag != 0 || (t.other_flag != nullptr && flags.*t.other_flag != 0);
}

// Opens the target's files, runs its generator with all of them open,
// then moves them into place and announces them in table order. An output
// that cannot be opened is not detected: the generator writes into a
// failed stream and the line is printed as usual. A write that fails
// keeps the previous file and ends the run (false).
bool generate(const tarn_target& t, Module* module, const tarn_flags& flags, const tarn_paths& paths)
{
    if (t.vhdl_put != nullptr && module != nullptr) {
        bool write_failed = false;
        tarn_vhdl_post_pass(
            paths.path(t.files[0].separator, t.files[0].suffix),
            [&](std::ostream& tmp, std::ifstream& libs) { t.vhdl_put(module, flags, tmp, libs); },
            std::cout, &write_failed);
        return !write_failed;
    }
    if (t.put == nullptr || module == nullptr) {
        std::cerr << "tarn: " << t.name << " generation is not available in this build" << std::endl;
        return true;
    }
    std::string names[2];
    std::unique_ptr<tarn_output_file> outputs[2];
    std::ostream* files[2] = {nullptr, nullptr};
    for (int i = 0; i < 2 && t.files[i].suffix != nullptr; ++i) {
        names[i] = paths.path(t.files[i].separator, t.files[i].suffix);
        outputs[i] = std::make_unique<tarn_output_file>(names[i]);
        files[i] = &outputs[i]->stream();
    }
    t.put(module, flags, files);
    bool ok = true;
    for (int i = 0; i < 2 && files[i] != nullptr; ++i)
        ok = outputs[i]->commit(std::cerr) && ok;
    if (!ok)
        return false;
    for (int i = 0; i < 2 && files[i] != nullptr; ++i)
        std::cout << "generation of " << names[i] << std::endl;
    return true;
}

}  // namespace

bool tarn_read_options(int argc, char** argv, tarn_flags& flags, std::string& unknown)
{
    for (int i = 2; i < argc; ++i) {
        const tarn_option* match = nullptr;
        for (const tarn_option& o : options)
            if (std::strcmp(argv[i], o.text) == 0) {
                match = &o;
                break;
            }
        if (match == nullptr) {
            unknown = argv[i];
            return false;
        }
        flags.*match->flag = 1;
        if (match->second_flag != nullptr)
            flags.*match->second_flag = 1;
    }
    return true;
}

bool tarn_vhdl_post_pass(const std::string& vhdl_path, const tarn_vhdl_generator& generate_vhdl,
                         std::ostream& report, bool* write_failed)
{
    if (write_failed != nullptr)
        *write_failed = false;
    std::string tmp_name = vhdl_path + "_tmp";
    async_ofstream tmp(tmp_name);
    bool tmp_opened = tmp.is_open();
    std::ifstream libs("vhdl_libs.inc");
    generate_vhdl(tmp, libs);
    if (libs.good())
        libs.close();
    tmp.flush();
    bool tmp_written = tmp.good();
    tmp.close();
    tmp_written = tmp_written && !tmp.fail();
    if (tmp_opened && !tmp_written) {
        std::cerr << "tarn: cannot write " << tmp_name << "; the previous " << vhdl_path << " is kept" << std::endl;
        if (write_failed != nullptr)
            *write_failed = true;
        return false;
    }

    std::ifstream back(tmp_name);
    if (!back.is_open())
        return false;
    tarn_output_file vhdl(vhdl_path);
    {
        text_out out(vhdl.stream());
        std::string line;
        while (std::getline(back, line)) {
            put_substituted(line, "__", "_X_", [&out](std::string_view piece) { out << piece; });
            out << '\n';
        }
    }
    back.close();
    if (!vhdl.commit(std::cerr)) {
        if (write_failed != nullptr)
            *write_failed = true;
        return false;
    }
    report << "generation of " << vhdl_path << std::endl;
    return true;
}

void tarn_generate_every_target(Module* module, const tarn_flags& flags, std::ostream& sink)
{
    for (const tarn_target& t : targets) {
        std::ostream* files[2] = {&sink, &sink};
        if (t.vhdl_put != nullptr) {
            std::ifstream libs;
            t.vhdl_put(module, flags, sink, libs);
        } else if (t.put != nullptr) {
            t.put(module, flags, files);
        }
    }
}

int tarn_run(const std::string& input_name, const tarn_flags& flags)
{
    // Processor time of this process only: time in the panel is not counted.
    g_chrono chrono;
    chrono.Go();

    tarn_paths paths = tarn_split_input_name(input_name);
    std::string suffix;
    bool parsed_ok = false;
    Module* module = parse(paths.path("/", ".zkc"), suffix, &parsed_ok);
    std::cerr << "parsing terminated" << std::endl;
    // A missing or unreadable file has had its messages; there is no module
    // to finalise, and the run ends here rather than on a null module.
    if (!parsed_ok)
        return 1;

    Module::finalize(module, 0);

    // Announced in every run, although the log really written is the input
    // path plus ".log" (base.zkc.log).
    std::cout << "generation of " << paths.path("/", ".log") << std::endl;
    for (const tarn_target& t : targets)
        if (requested(t, flags) && !generate(t, module, flags, paths))
            return 1;

    double seconds = chrono.Stop() / 1000.0;
    std::cout << "compilation finished in " << seconds << " seconds" << "\n\n" << std::flush;
    return 0;
}
