#include "cli/options.h"

#include <getopt.h>

namespace Quask {
namespace {

constexpr option longOptions[] = {
    {"who", no_argument, nullptr, 'w'},
    {"who-all", no_argument, nullptr, 'a'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

}  // namespace

Options parseOptions(int argc, char** argv)
{
    Options options;
    int letter = 0;
    while ((letter = getopt_long(argc, argv, "xptef:wah", longOptions, nullptr)) != -1) {
        switch (letter) {
            case 'a':
                options.whoAll = true;
                break;
            case 'e':
                options.printEmpty = true;
                break;
            case 'f':
                // A file always means the report on all tables, whatever else is asked for.
                options.outputFile = optarg;
                options.whoAll = true;
                break;
            case 'h':
                options.help = true;
                return options;
            case 'p':
                options.style = QuaskTextify::Pretty;
                break;
            case 't':
                options.style = QuaskTextify::Vosk;
                break;
            case 'w':
                options.showHeaders = true;
                options.showWho = true;
                options.style = QuaskTextify::Pretty;
                break;
            case 'x':
                options.showHeaders = true;
                options.style = QuaskTextify::Pretty;
                break;
            default:
                break;
        }
    }
    if (optind < argc) {
        options.expression = argv[optind];
    }
    return options;
}

}  // namespace Quask
