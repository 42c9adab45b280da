/* sysfile_posix_test.cpp - what the file layer does with what only POSIX has: permissions. */
#include "sysfile_fixture.h"

#include <sys/stat.h>

TEST_F(sysfile, permissions)
{
    const mode_t mask = umask(027);
    sysfile_t *file = open(folder.file("f"), "w", SYSFILE_PLAIN);
    umask(mask);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    struct stat about = {};
    EXPECT_EQ(stat(folder.file("f").c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0640U);
}
