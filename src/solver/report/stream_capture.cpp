/* stream_capture.cpp - see stream_capture.h. */
#include "solver/report/stream_capture.h"

#include <algorithm>
#include <cstring>
#include <new>

static void drop_front(stream_capture *capture, size_t num_bytes)
{
    capture->tail.erase(0, num_bytes);
    capture->left_out_bytes += static_cast<int64_t>(num_bytes);
}

void stream_capture_add(stream_capture *capture, const char *text) noexcept
{
    const size_t half = capture->limit_bytes / 2;
    const size_t size = std::strlen(text);
    size_t taken = 0;
    try {
        if (capture->tail.empty() && capture->left_out_bytes == 0) {
            const size_t room = half - std::min(half, capture->head.size());
            capture->head.append(text, std::min(room, size));
            taken = std::min(room, size);
        }
        capture->tail.append(text + taken, size - taken);
        if (capture->tail.size() > 2 * half) drop_front(capture, capture->tail.size() - half);
    } catch (const std::bad_alloc &) {
        capture->left_out_bytes += static_cast<int64_t>(size - taken);
    }
}

void stream_capture_end(stream_capture *capture)
{
    const size_t half = capture->limit_bytes / 2;
    if (capture->tail.size() > half) drop_front(capture, capture->tail.size() - half);
    if (capture->left_out_bytes == 0) return; /* the tail goes on where the head ends */
    const size_t line_end = capture->tail.find('\n');
    if (line_end != std::string::npos) drop_front(capture, line_end + 1);
}
