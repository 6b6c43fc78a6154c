#include "cli/command_line.h"
#include "cli/process.h"
#include "json/help_text.h"
#include "json/jobs.h"

namespace {

int run(int argc, char** argv)
{
    using namespace Quask::Json;
    Quask::Program const quaskJson{helpText, runAllTablesJob, runSingleTableJob};
    return Quask::runCommandLine(quaskJson, argc, argv);
}

}  // namespace

int main(int argc, char** argv)
{
    return Quask::runProcess(run, argc, argv);
}
