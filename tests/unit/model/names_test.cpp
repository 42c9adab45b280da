/* Name tables and the index over them. */
#include "solver/model/names.h"

#include <gtest/gtest.h>

namespace
{
TEST(Names, AppendPutGet)
{
    name_table t;
    EXPECT_EQ(names_append(&t, "alpha"), 0);
    EXPECT_EQ(names_append(&t, ""), 1);
    EXPECT_EQ(names_append(&t, "b"), 2);
    names_resize(&t, 5);
    EXPECT_EQ(names_get(&t, 0), "alpha");
    EXPECT_EQ(names_get(&t, 1), "");
    EXPECT_EQ(names_get(&t, 4), "");
    EXPECT_EQ(names_shown(&t, 0, 'x'), "alpha");
    EXPECT_EQ(names_shown(&t, 4, 'x'), "x5");

    names_put(&t, 1, "now named");
    names_put(&t, 0, "a");              /* shorter than before */
    names_put(&t, 2, "longer than b");  /* longer */
    names_put(&t, 4, names_get(&t, 1)); /* a text of the table itself */
    EXPECT_EQ(names_get(&t, 0), "a");
    EXPECT_EQ(names_get(&t, 1), "now named");
    EXPECT_EQ(names_get(&t, 2), "longer than b");
    EXPECT_EQ(names_get(&t, 4), "now named");
    names_put(&t, 1, names_get(&t, 1).substr(4)); /* a part of what it replaces */
    EXPECT_EQ(names_get(&t, 1), "named");
    names_put(&t, 1, "");
    EXPECT_EQ(names_get(&t, 1), "");

    names_resize(&t, 2);
    EXPECT_EQ(t.start.size(), 2U);
    names_clear(&t);
    EXPECT_TRUE(t.start.empty());
}

/* A table that is renamed for ever does not grow for ever, and keeps what it should. */
TEST(Names, ReplacingDoesNotPileUp)
{
    name_table t;
    for (int i = 0; i < 100; ++i) names_append(&t, "start" + std::to_string(i));
    for (int round = 0; round < 2000; ++round)
        names_put(&t, round % 99, std::string(static_cast<size_t>(round % 50 + 1), 'n'));
    EXPECT_LT(t.text.size(), 30000U);
    EXPECT_EQ(names_get(&t, 99), "start99");
    EXPECT_EQ(names_get(&t, 1999 % 99), std::string(1999 % 50 + 1, 'n'));
    const name_table copy = t;
    EXPECT_EQ(names_get(&copy, 99), "start99");
}

TEST(NameIndex, FindsEveryNameAndNoOther)
{
    name_table t;
    name_index index;
    EXPECT_EQ(name_index_find(&index, &t, "x"), -1);
    constexpr int32_t num = 20000; /* several times through a growing index */
    for (int32_t i = 0; i < num; ++i) {
        bool is_new = false;
        EXPECT_EQ(name_index_intern(&index, &t, "row" + std::to_string(i), &is_new), i);
        EXPECT_TRUE(is_new);
    }
    for (int32_t i = 0; i < num; ++i) ASSERT_EQ(name_index_find(&index, &t, "row" + std::to_string(i)), i);
    bool is_new = true;
    EXPECT_EQ(name_index_intern(&index, &t, "row7", &is_new), 7);
    EXPECT_FALSE(is_new);
    EXPECT_EQ(index.num, num);
    for (const char *other : {"row", "row20000", "row7 ", "ow7", ""})
        EXPECT_EQ(name_index_find(&index, &t, other), -1) << other;
}

/* Names of every length differ from those that share their beginning or their end. */
TEST(NameIndex, LengthsAndNearNames)
{
    name_table t;
    name_index index;
    int32_t num = 0;
    for (size_t size = 1; size <= 40; ++size)
        for (size_t at = 0; at < size; ++at) {
            std::string name(size, 'a');
            name[at] = 'b';
            bool is_new = false;
            EXPECT_EQ(name_index_intern(&index, &t, name, &is_new), num++) << name;
        }
}

TEST(NameIndex, BuildTellsTheFirstRepeat)
{
    name_table t;
    for (const char *name : {"a", "", "b", "", "a", "b"}) names_append(&t, name);
    name_index index;
    EXPECT_EQ(name_index_build(&index, &t), 4);
    names_put(&t, 4, "c");
    names_put(&t, 5, "d");
    EXPECT_EQ(name_index_build(&index, &t), -1);
    EXPECT_EQ(name_index_find(&index, &t, "d"), 5);
    EXPECT_EQ(name_index_find(&index, &t, "a"), 0);
    names_append(&t, "d");
    EXPECT_EQ(name_index_add(&index, &t, 6), 5);
}

/* The steps before many look-ups at a time change nothing, whatever is looked for. */
TEST(NameIndex, FetchStepsAreHarmless)
{
    name_table t;
    name_index index;
    name_index_fetch_slot(&index, name_hash("x"));
    EXPECT_EQ(name_index_fetch_start(&index, &t, name_hash("x")), -1);
    bool is_new = false;
    name_index_intern(&index, &t, "x", &is_new);
    EXPECT_EQ(name_index_fetch_start(&index, &t, name_hash("x")), 0);
    EXPECT_EQ(name_index_fetch_start(&index, &t, name_hash("y")), -1);
    name_index_fetch_text(&t, 0);
    EXPECT_EQ(name_index_find(&index, &t, "x"), 0);
}
}  // namespace
