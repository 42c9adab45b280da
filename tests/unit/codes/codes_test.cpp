/* The table of return codes against the public header and the committed page. Order, classes and low bytes are checked by
 * the compiler. */
#include "solver/codes/codes.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <sstream>

static std::string file_text(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

/* Every "ZLR_RES_X = number" of the header. */
static std::map<std::string, int32_t> header_codes()
{
    const std::string text = file_text(ZELOR_SOURCE_DIR "/include/zelor.h");
    const std::regex row("(ZLR_RES_[A-Z_]+)\\s*=\\s*(\\d+)");
    std::map<std::string, int32_t> codes;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), row); it != std::sregex_iterator(); ++it)
        codes[(*it)[1]] = std::stoi((*it)[2]);
    return codes;
}

TEST(codes, header_and_table_agree)
{
    const auto header = header_codes();
    ASSERT_GT(header.size(), 30U);
    for (const auto &[symbol, code] : header) {
        const code_row *row = code_find(code);
        ASSERT_NE(row, nullptr) << symbol;
        EXPECT_EQ(row->symbol, symbol);
    }
    int32_t num = 0;
    code_table(&num);
    EXPECT_EQ(static_cast<size_t>(num), header.size());
}

TEST(codes, texts_are_sentences_of_their_own)
{
    int32_t num = 0;
    const code_row *table = code_table(&num);
    std::set<std::string> texts;
    for (int32_t i = 0; i < num; i++) {
        EXPECT_TRUE(texts.insert(table[i].text).second) << table[i].text;
        EXPECT_NE(std::string(table[i].text).back(), '.') << table[i].text;
    }
}

TEST(codes, unknown_codes_are_classed_by_range)
{
    static const struct {
        int32_t code, response_class;
    } cases[] = {
        {0, ZLR_CLASS_OK},
        {1, ZLR_CLASS_WARNING},
        {999, ZLR_CLASS_WARNING},
        {1000, ZLR_CLASS_ERROR},
        {9999, ZLR_CLASS_ERROR},
        {10000, ZLR_CLASS_TERMINATION},
        {1053, ZLR_CLASS_ERROR},
        {99999, ZLR_CLASS_TERMINATION},
        {-1, ZLR_CLASS_ERROR},
        {INT32_MIN, ZLR_CLASS_ERROR},
        {INT32_MAX, ZLR_CLASS_TERMINATION},
    };
    for (const auto &c : cases) EXPECT_EQ(code_class(c.code), c.response_class) << c.code;
    for (const int32_t code : {-1, 1, 1000, 10999, INT32_MAX}) EXPECT_EQ(code_find(code), nullptr) << code;
}

TEST(codes, committed_page_is_up_to_date)
{
    EXPECT_TRUE(file_text(ZELOR_SOURCE_DIR "/docs/codes.md") == code_reference_page()) << "run the build target docs";
}
