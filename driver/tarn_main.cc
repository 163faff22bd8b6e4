#include "driver/tarn_run.h"
#include "driver/wintarn_interface.h"

#include "context/compilation.h"

#include <cstring>
#include <iostream>

int main(int argc, char** argv)
{
    std::string version = tarn_version();
    tarn_flags flags;
    // The reader creates the data tables on first use.
    Compilation::forget_data_tables();

    if (argc < 3) {
        if (argc == 2 && std::strcmp(argv[1], "-h") == 0) {
            std::cout << tarn_help_banner(version) << std::flush;
            return 0;
        }
        if (argc == 2 && std::strcmp(argv[1], "-v") == 0) {
            std::cout << "TARN : BRAm Finaliser version  " << version << std::endl;
            return 0;
        }
        // No argument, or a file name alone: the front panel's road.
        std::string input_name;
        int status = tarn_front_panel(argc, argv, version, input_name, flags);
        if (status >= 0)
            return status;
        return tarn_run(input_name, flags);
    }

    // argv[1] is the input as it stands, even when it starts with a dash.
    std::string unknown;
    if (!tarn_read_options(argc, argv, flags, unknown)) {
        std::cerr << "`" << unknown << "' unknown option: try tarn -h to known the list ...\n\n" << std::flush;
        return 1;
    }
    return tarn_run(argv[1], flags);
}
