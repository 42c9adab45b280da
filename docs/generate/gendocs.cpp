/* gendocs.cpp - writes the reference pages that are made from tables: gendocs FOLDER. Run by the build target `docs`. */
#include "solver/codes/codes.h"
#include "solver/io/bytes.h"
#include "solver/params/params.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: gendocs FOLDER\n");
        return 1;
    }
    const std::string folder = argv[1];
    sysenv *sys = sysenv_create("gendocs", __LINE__, 0, nullptr);
    if (sys == nullptr) return 1;
    int32_t res = sink_whole_file(sys, (folder + "/codes.md").c_str(), {false}, code_reference_page());
    if (res == ZLR_RES_OK)
        res = sink_whole_file(sys, (folder + "/parameters.md").c_str(), {false}, param_reference_page());
    (void)sysenv_delete("gendocs", __LINE__, &sys);
    if (res != ZLR_RES_OK) std::fprintf(stderr, "gendocs: the pages cannot be written into %s\n", argv[1]);
    return res == ZLR_RES_OK ? 0 : 1;
}
