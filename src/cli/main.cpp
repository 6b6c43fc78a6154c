#include "cli/command_line.h"
#include "cli/help_text.h"
#include "cli/job_dispatch.h"
#include "cli/process.h"

namespace {

int run(int argc, char** argv)
{
    Quask::Program const quask{Quask::helpText, Quask::runAllTablesJob, Quask::runSingleTableJob};
    return Quask::runCommandLine(quask, argc, argv);
}

}  // namespace

int main(int argc, char** argv)
{
    return Quask::runProcess(run, argc, argv);
}
