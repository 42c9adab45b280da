/* usage.cpp - the usage table.
 *
 * The lines are printed as they stand, their spelling included: texts that people have in manuals and scripts. Not
 * listed, on purpose: -lb, -primalrepair, -nowrsol, -stat and -+. */
#include "usage.h"

#include <cstdio>

// clang-format off
static const char *const usage_lines[] = {
    "-anapro                { Analyze the problem data }",
    "-anasoli name          { Analyze the initial solution name e.g. -anasoli bas }",
    "-anasolo name          { Analyze the final solution name -anasolo itg }",
    "-a                     { ZELOR is started in AMPL mode }",
    "-AMPL                  { ZELOR is started in AMPL mode }",
    "-basi    name          { Input basis solution file name }",
    "-baso    name          { Output basis solution file name }",
    "-d       name  value   { Define a ZELOR parameter }",
    "-dbgmem  name          { Name of memory debug file}",
    "-f                     { Complete license information is printed }",
    "-h                     { Help }",
    "-inti    name          { Input integer solution file name }",
    "-into    name          { Output integer solution file name }",
    "-itri    name          { Input interior point solution file name }",
    "-itro    name          { Output interior point solution file name }",
    "-info    name          { Infeasible subproblem output file name }",
    "-infrepo name          { Feasibility reparation output file }",
    "-l       dir           { dir is the directory where the file zelor.lic is located }",
    "-L       dir           { Same as -l }",
    "-max                   { The problem is maximized }",
    "-min                   { The problem is minimized }",
    "-n                     { Ignore errors in subsequent paramter settings }",
    "-out     name          { Write the task to a data file named name }",
    "-p       name          { Same as the -pari option }",
    "-pari    name          { Name of the input parameter filename }",
    "-paro    name          { Name of the output parameter file }",
    "-r                     { If the option is present, the program returns -1 if an error ocurred otherwise 0 }",
    "-removeitg             { Removes all integer constraints after reading the problem }",
    "-rout    name          { If the option is present, the program writes the return code to file 'name' }",
    "-q       name          { Name of a optional log file }",
    "-sen     file          { Perform sensitivity analysis based on file }",
    "-silent                { As little information as possible is send to the terminal }",
    "-toconic               { Translate to conic form after reading }",
    "-v                     { ZELOR version is printed and no optimization is performed }",
    "-w                     { If this options is on, then ZELOR will wait for a license }",
    "-x                     { Do not run the optimizer. Useful for converting between file formats }",
    "-?                     { Same as -h option }",
    "-=                     { List all possible parameters }",
    nullptr
};
// clang-format on

void print_usage(const char *program)
{
    std::printf("\nusage   : %s [options] [filename]\n", program);
    std::printf("options : \n");
    for (const char *const *line = usage_lines; *line != nullptr; ++line) std::printf("\t\t%s\n", *line);
    std::printf("\n");
}
