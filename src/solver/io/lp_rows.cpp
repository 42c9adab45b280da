/* lp_rows.cpp - see lp_rows.h. */
#include "solver/io/lp_rows.h"

#include <cmath>

static lp_piece *piece_with_room(lp_rows *rows)
{
    if (rows->pieces.empty() || rows->pieces.back()->num == lp_piece_entries) {
        rows->pieces.push_back(std::unique_ptr<lp_piece>(new lp_piece)); /* its arrays need no zeros */
        rows->pieces.back()->num = 0;
    }
    return rows->pieces.back().get();
}

void lp_rows_finish(lp_rows *rows)
{
    int32_t length = 0;
    for (size_t k = 0; k < rows->col.size(); k++) {
        if (rows->value[k] == 0.0 || std::fabs(rows->value[k]) < rows->tiny) continue;
        lp_piece *piece = piece_with_room(rows);
        piece->col[piece->num] = rows->col[k];
        piece->value[piece->num] = rows->value[k];
        piece->num++;
        length++;
    }
    rows->length.push_back(length);
    rows->col.clear();
    rows->value.clear();
}

/* start[j + 1] becomes the number of entries in the columns up to j. */
static void count_columns(const lp_rows *rows, int32_t num_var, std::vector<int64_t> *start)
{
    start->assign(static_cast<size_t>(num_var) + 1, 0);
    for (const std::unique_ptr<lp_piece> &piece : rows->pieces)
        for (int32_t k = 0; k < piece->num; k++) (*start)[static_cast<size_t>(piece->col[k]) + 1]++;
    for (size_t j = 1; j < start->size(); j++) (*start)[j] += (*start)[j - 1];
}

void lp_rows_to_columns(lp_rows *rows, int32_t num_var, sparse_columns *a)
{
    std::vector<lp_seen>().swap(rows->seen);
    count_columns(rows, num_var, &a->start);
    const auto num_nz = static_cast<size_t>(a->start.back());
    a->row.resize(num_nz);
    a->value.resize(num_nz);

    /* start[j] serves as the place of the next entry of column j; in the end it has become start[j + 1]. */
    int32_t row = 0;
    int32_t left = rows->length.empty() ? 0 : rows->length[0];
    for (std::unique_ptr<lp_piece> &piece : rows->pieces) {
        for (int32_t k = 0; k < piece->num; k++) {
            while (left == 0) left = rows->length[static_cast<size_t>(++row)];
            const auto at = static_cast<size_t>(a->start[static_cast<size_t>(piece->col[k])]++);
            a->row[at] = row;
            a->value[at] = piece->value[k];
            left--;
        }
        piece.reset();
    }
    for (size_t j = a->start.size() - 1; j > 0; j--) a->start[j] = a->start[j - 1];
    a->start[0] = 0;
}
