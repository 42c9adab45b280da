/* Parameter files: what a line may look like, errors with file and line, reading back what was written. */
#include "solver/params/params.h"
#include "support/sys.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

class param_file : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string made = (fs::temp_directory_path() / "zelor-param-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
        param_set_defaults(&set);
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        out.out[ZLR_STREAM_ERR] = {append, &errors, nullptr};
        out.out[ZLR_STREAM_WRN] = {append, &warnings, nullptr};
    }

    void TearDown() override { fs::remove_all(folder); }

    int32_t read(const std::string &text)
    {
        const std::string path = (folder / "p.par").string();
        std::ofstream(path, std::ios::binary) << text;
        return param_read_file(&set, test_sys(), path.c_str(), &out);
    }

    fs::path folder;
    param_set set;
    stream_set out;
    std::string errors, warnings;
};

TEST_F(param_file, forms_of_a_line)
{
    static const struct {
        const char *line, *name, *value;
    } cases[] = {
        {"TIME_LIMIT 7", "TIME_LIMIT", "7"},
        {"\t time_limit=8\r", "TIME_LIMIT", "8"},
        {"TIME_LIMIT = 9 # seconds", "TIME_LIMIT", "9"},
        {"\xEF\xBB\xBFTIME_LIMIT 10", "TIME_LIMIT", "10"},
        {"OPTIMIZER intpnt", "OPTIMIZER", "INTPNT"},
        {"RESULT_FILE out/r#1.json # out/r#1.json", "RESULT_FILE", "out/r#1.json"},
        {"RESULT_FILE my result.json", "RESULT_FILE", "my result.json"},
        {"RESULT_FILE \" a # b = \"\"c\"\" \" # end", "RESULT_FILE", " a # b = \"c\" "},
        {"RESULT_FILE C:\\new\\r.json", "RESULT_FILE", "C:\\new\\r.json"},
        {"RESULT_FILE \xC3\xA4# b", "RESULT_FILE", "\xC3\xA4# b"},
        {"RESULT_FILE=\"\"", "RESULT_FILE", ""},
        {"TIME_LIMIT \"11\"", "TIME_LIMIT", "11"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(read(c.line), ZLR_RES_OK) << c.line << errors;
        EXPECT_EQ(param_value_text(&set, param_find_name(c.name)), c.value) << c.line;
    }
    EXPECT_EQ(read(""), ZLR_RES_OK);
    EXPECT_EQ(read("\n \t\r\n# only a comment\r\n\r\n"), ZLR_RES_OK);
    EXPECT_EQ(errors + warnings, "");
}

TEST_F(param_file, errors_name_file_and_line)
{
    static const struct {
        const char *name, *text;
        int32_t code;
        const char *message;
    } cases[] = {
        {"unknown name", "\nTIME_LIMI 7\n", ZLR_RES_ERR_PARAM_NAME, "p.par(2): unknown parameter 'TIME_LIMI' (did you"},
        {"bad value", "THREADS many", ZLR_RES_ERR_PARAM_VALUE, "p.par(1): THREADS: found 'many', expected an integer"},
        {"no value", "# x\n#\nTHREADS", ZLR_RES_ERR_FILE_FORMAT, "p.par(3): "},
        {"no value but an equal sign", "THREADS =  # 5", ZLR_RES_ERR_FILE_FORMAT, "p.par(1): "},
        {"no name", "= 5", ZLR_RES_ERR_FILE_FORMAT, "found no name"},
        {"open quote", "DATA_FILE \"x y\nTHREADS 2", ZLR_RES_ERR_FILE_FORMAT, "p.par(1): the closing quote"},
        {"open quote behind a doubled one", "DATA_FILE \"x\"\"", ZLR_RES_ERR_FILE_FORMAT, "the closing quote"},
        {"text behind a quote", "DATA_FILE \"x\" y", ZLR_RES_ERR_FILE_FORMAT, "behind the closing quote"},
        {"two values", "THREADS 2 3", ZLR_RES_ERR_PARAM_VALUE, "'2 3'"},
    };
    for (const auto &c : cases) {
        errors.clear();
        EXPECT_EQ(read(c.text), c.code) << c.name;
        EXPECT_NE(errors.find(c.message), std::string::npos) << c.name << ": " << errors;
    }
}

TEST_F(param_file, every_line_is_tried_and_the_first_error_is_the_result)
{
    const std::string text = "NO_SUCH_NAME 1\nTIME_LIMIT 5\nTHREADS x\nMIP_REL_GAP 0.25\n";
    EXPECT_EQ(read(text), ZLR_RES_ERR_PARAM_NAME);
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 2) << errors;
    EXPECT_EQ(param_dou(&set, DPAR_TIME_LIMIT), 5.0);
    EXPECT_EQ(param_dou(&set, DPAR_MIP_REL_GAP), 0.25);

    errors.clear();
    ASSERT_EQ(param_put_int(&set, IPAR_PARAM_IGNORE_ERRORS, 1, &out), ZLR_RES_OK);
    EXPECT_EQ(read(text), ZLR_RES_OK);
    EXPECT_EQ(errors, "");
    EXPECT_EQ(std::count(warnings.begin(), warnings.end(), '\n'), 2) << warnings;
}

TEST_F(param_file, what_is_no_text_file_is_refused)
{
    EXPECT_EQ(read(std::string("THREADS 1\n\0\0\x7f", 13)), ZLR_RES_ERR_FILE_FORMAT);
    EXPECT_EQ(param_read_file(&set, test_sys(), (folder / "absent").c_str(), &out), ZLR_RES_ERR_FILE_READ);
    EXPECT_EQ(param_read_file(&set, test_sys(), folder.c_str(), &out), ZLR_RES_ERR_FILE_READ);
    EXPECT_NE(errors.find("absent"), std::string::npos) << errors;
}

TEST_F(param_file, reads_back_what_it_wrote)
{
    const std::string path = (folder / "w.par").string();
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        const auto at = static_cast<size_t>(row->number);
        if (param_is_reserved(row)) continue;
        if (row->param_class == ZLR_PAR_DOUBLE)
            set.dou[at] = row->max < 1e300 ? row->min + (row->max - row->min) / 3 : 10.1 + 0.2;
        if (row->param_class == ZLR_PAR_INT) set.integer[at] = static_cast<int32_t>(row->max);
        if (row->param_class == ZLR_PAR_STR) set.str[at] = "  \"a\" # = \xE2\x82\xAC\\n" + std::to_string(at);
    }
    ASSERT_EQ(param_write_file(&set, test_sys(), path.c_str(), &out), ZLR_RES_OK) << errors;
    param_set back;
    param_set_defaults(&back);
    ASSERT_EQ(param_read_file(&back, test_sys(), path.c_str(), &out), ZLR_RES_OK) << errors;
    EXPECT_EQ(back.dou, set.dou);
    EXPECT_EQ(back.integer, set.integer);
    EXPECT_EQ(back.str, set.str);
}

TEST_F(param_file, defaults_are_written_as_comments_behind_the_others)
{
    const std::string path = (folder / "w.par").string();
    ASSERT_EQ(param_put_text(&set, "OPTIMIZER", "1", &out), ZLR_RES_OK);
    ASSERT_EQ(param_write_file(&set, test_sys(), path.c_str(), &out), ZLR_RES_OK);
    std::ifstream file(path);
    bool found = false;
    int comments = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("OPTIMIZER ", 0) == 0) {
            EXPECT_NE(line.find("INTPNT"), std::string::npos);
            found = true;
        } else {
            EXPECT_TRUE(line.empty() || line[0] == '#') << line;
            comments += found && line.rfind("# ", 0) == 0 ? 1 : 0;
        }
    }
    int32_t num = 0;
    const param_row *table = param_table(&num);
    const auto num_reserved =
        std::count_if(table, table + num, [](const param_row &r) { return param_is_reserved(&r); });
    EXPECT_TRUE(found);
    EXPECT_EQ(comments, num - num_reserved); /* all others, and their heading */
}

TEST_F(param_file, failures_of_writing_are_told_and_leave_nothing)
{
    EXPECT_EQ(param_write_file(&set, test_sys(), (folder / "no" / "w.par").c_str(), &out), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(param_write_file(&set, test_sys(), "", &out), ZLR_RES_ERR_FILE_OPEN);
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(param_write_file(&set, test_sys(), "/dev/full", &out), ZLR_RES_ERR_FILE_WRITE);
    }
    EXPECT_GE(std::count(errors.begin(), errors.end(), '\n'), 2) << errors;

    set.str[SPAR_DATA_FILE] = "two\nlines";
    const std::string path = (folder / "w.par").string();
    EXPECT_EQ(param_write_file(&set, test_sys(), path.c_str(), &out), ZLR_RES_OK);
    EXPECT_NE(warnings.find("DATA_FILE"), std::string::npos) << warnings;
    EXPECT_EQ(param_read_file(&set, test_sys(), path.c_str(), &out), ZLR_RES_OK) << errors;
}
