/* Parameters of files that act in the interface: the file of the log, and solutions that are not worth a file. */
#include "api_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

class file_params : public api_optimize
{
protected:
    void SetUp() override
    {
        api_optimize::SetUp();
        std::string made = (fs::temp_directory_path() / "zelor-files-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
    }

    void TearDown() override
    {
        api_optimize::TearDown();
        fs::remove_all(folder);
    }

    std::string file(const char *name) const { return (folder / name).string(); }

    static std::string text_of(const std::string &path)
    {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    void set(const char *name, const std::string &value)
    {
        ASSERT_EQ(ZLR_putparam(task, name, value.c_str()), ZLR_RES_OK) << log;
    }

    fs::path folder;
};

TEST_F(file_params, log_file_holds_what_the_log_holds)
{
    fill(task, two_rows(ZLR_SENSE_MIN));
    set("LOG_FILE", file("run.log"));
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    ASSERT_EQ(ZLR_solutionsummary(task, ZLR_STREAM_MSG), ZLR_RES_OK);
    EXPECT_NE(log.find("solution: OPTIMAL"), std::string::npos) << log;
    EXPECT_EQ(text_of(file("run.log")), log);

    renew();
    std::ofstream(file("other.log")) << "before\n";
    set("LOG_FILE", file("other.log"));
    set("LOG_FILE_MODE", "APPEND");
    ASSERT_EQ(ZLR_echotask(task, ZLR_STREAM_MSG, "behind\n"), ZLR_RES_OK);
    EXPECT_EQ(text_of(file("other.log")), "before\nbehind\n");

    renew();
    set("LOG_FILE", file("other.log"));
    ASSERT_EQ(ZLR_echotask(task, ZLR_STREAM_MSG, "alone\n"), ZLR_RES_OK);
    EXPECT_EQ(text_of(file("other.log")), "alone\n");
}

TEST_F(file_params, solutions_below_the_wanted_status_are_passed_over)
{
    static const struct {
        const char *wanted;
        bool has_point, has_optimal; /* which files there are then */
    } cases[] = {{"ANY", true, true}, {"FEASIBLE", false, true}, {"OPTIMAL", false, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.wanted);
        renew();
        fill(task, two_rows(ZLR_SENSE_MIN));
        set("WRITE_SOLUTION_STATUS", c.wanted);
        const std::string point = file((std::string(c.wanted) + "1.bas").c_str());
        const std::string optimal = file((std::string(c.wanted) + "2.bas").c_str());
        const double xx[] = {0.0, 0.0}; /* put by the caller, its status is unknown */
        ASSERT_EQ(ZLR_putsolution(task, ZLR_SOL_BAS, nullptr, nullptr, nullptr, nullptr, xx, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr),
                  ZLR_RES_OK);
        EXPECT_EQ(ZLR_writesolution(task, ZLR_SOL_BAS, point.c_str()), ZLR_RES_OK);
        EXPECT_EQ(fs::exists(point), c.has_point);
        EXPECT_EQ(log.find("is not written") == std::string::npos, c.has_point) << log;
        ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
        EXPECT_EQ(ZLR_writesolution(task, ZLR_SOL_BAS, optimal.c_str()), ZLR_RES_OK);
        EXPECT_EQ(fs::exists(optimal), c.has_optimal);
    }
}

/* A stop at once leaves a feasible start as it is: feasible, not optimal. */
TEST_F(file_params, feasible_and_optimal_differ)
{
    for (const char *wanted : {"FEASIBLE", "OPTIMAL"}) {
        SCOPED_TRACE(wanted);
        renew();
        api_model m = two_rows(ZLR_SENSE_MIN);
        m.integers = {0, 1};
        fill(task, m);
        const double xx[] = {1.0, 1.0};
        ASSERT_EQ(ZLR_putsolution(task, ZLR_SOL_ITG, nullptr, nullptr, nullptr, nullptr, xx, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr),
                  ZLR_RES_OK);
        set("TIME_LIMIT", "0");
        set("WRITE_SOLUTION_STATUS", wanted);
        EXPECT_GE(ZLR_optimize(task), 10000) << log;
        int32_t solsta = -1;
        ASSERT_EQ(ZLR_getsolsta(task, ZLR_SOL_ITG, &solsta), ZLR_RES_OK) << log;
        ASSERT_EQ(solsta, ZLR_SOLSTA_PRIM_FEAS);
        const std::string path = file((std::string(wanted) + ".int").c_str());
        EXPECT_EQ(ZLR_writesolution(task, ZLR_SOL_ITG, path.c_str()), ZLR_RES_OK);
        EXPECT_EQ(fs::exists(path), std::string(wanted) == "FEASIBLE");
    }
}
