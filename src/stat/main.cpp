#include "cli/process.h"
#include "stat/run.h"

int main(int argc, char** argv)
{
    return Quask::runProcess(Quask::Stat::run, argc, argv);
}
