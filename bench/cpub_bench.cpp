/* cpub_bench.cpp - the support library beside its peers, side by side in one run: file layer and C library or zlib, memory
 * manager and malloc.
 *
 *   cpub_bench [folder [rounds [group]]]
 *     folder: where its files go, default /tmp; rounds: default 11; group: plain, gzip, lines, text or memory, default all
 *
 * Both sides of a row run in turn, the order changing from round to round. A line shows the medians, the median of the
 * rounds' ratios (below 1: we are quicker) and the ratio that is allowed. Times are of the processor, the system's work on
 * files included: what else the machine does, and when a disk gets to write, is not what is compared. A folder in memory
 * (/dev/shm) gives the steadiest figures. */
#include "cpub/sysfile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>
#include <zlib.h>

static const uint64_t BUFFER = SYSFILE_BUFFER_BYTES;
static const uint64_t PLAIN_BYTES = 64 * BUFFER;
static const uint64_t GZIP_BYTES = 8 * BUFFER;

static sysenv *sys = nullptr;
static std::string path; /* one file for both: where its pages come to lie is felt */
static int rounds = 11;

static void require(bool holds, const char *what)
{
    if (holds) return;
    std::fprintf(stderr, "cpub_bench: %s failed\n", what);
    std::exit(1);
}

/* ---- Timing ---- */

using work = std::function<void()>;

static double processor_s()
{
    timespec now = {};
    require(clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now) == 0, "clock_gettime");
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

static double time_s(const work &run)
{
    const double start_s = processor_s();
    run();
    return processor_s() - start_s;
}

static double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/* One line: `amount` units of work on either side, told as `unit` a second or as nanoseconds a unit. */
static void compare(const std::string &name, double amount, const char *unit, double allowed, const work &ours,
                    const work &peer)
{
    std::vector<double> times[2];
    std::vector<double> ratios;
    ours();
    peer();
    for (int k = 0; k < rounds; ++k) {
        for (const int side : {k % 2, 1 - k % 2}) times[side].push_back(time_s(side == 0 ? ours : peer));
        ratios.push_back(times[0].back() / times[1].back());
    }
    const double ratio = median(ratios);
    const double our_s = median(times[0]);
    const double peer_s = median(times[1]);
    const bool is_rate = std::strcmp(unit, "ns") != 0;
    const double our_value = is_rate ? amount / our_s : our_s / amount * 1e9;
    const double peer_value = is_rate ? amount / peer_s : peer_s / amount * 1e9;
    std::printf("%-38s %10.1f %10.1f %-5s %6.2f", name.c_str(), our_value, peer_value, unit, ratio);
    if (allowed > 0) std::printf("  (%.2f)%s", allowed, ratio > allowed * 1.03 ? "  ABOVE" : "");
    std::printf("\n");
    std::fflush(stdout);
}

static void heading(const char *title, const char *peer)
{
    std::printf("\n%-38s %10s %10s %-5s %6s  (allowed)\n", title, "cpub", peer, "", "ratio");
}

/* ---- Streams of both sides ---- */

static sysfile_t *our_open(bool for_reading, int32_t kind)
{
    sysfile_t *file = nullptr;
    int32_t res = 0;
    sysenv_fopen(sys, path.c_str(), 0, for_reading, !for_reading, 0, kind, 0, &file, &res);
    require(res == SYSFILE_OK, "sysenv_fopen");
    return file;
}

/* The C library's stream with a buffer like ours, which must be given to it: with a size alone some libraries keep their
 * own small one. */
struct peer_file {
    FILE *fp;
    char *buffer;
};

static peer_file peer_open(const char *mode)
{
    const peer_file file = {std::fopen(path.c_str(), mode), static_cast<char *>(std::malloc(BUFFER))};
    require(file.fp != nullptr && file.buffer != nullptr, "fopen");
    require(std::setvbuf(file.fp, file.buffer, _IOFBF, BUFFER) == 0, "setvbuf");
    return file;
}

static void peer_close(const peer_file &file)
{
    require(std::fclose(file.fp) == 0, "fclose");
    std::free(file.buffer);
}

static gzFile peer_gzopen(const char *mode)
{
    gzFile file = gzopen(path.c_str(), mode);
    require(file != nullptr && gzbuffer(file, BUFFER) == 0, "gzopen");
    return file;
}

/* Text like a model file: words and numbers, lines of 20 to 60 bytes. */
static std::string sample(uint64_t n, const char *line_end)
{
    std::string text;
    unsigned seed = 12345;
    while (text.size() < n) {
        char line[80];
        seed = seed * 1664525U + 1013904223U;
        std::snprintf(line, sizeof line, "    x%07u  row%05u  %.*f%s", seed >> 10, seed >> 17,
                      static_cast<int>(seed >> 28), seed / 1e5, line_end);
        text += line;
    }
    text.resize(n);
    return text;
}

static std::string size_name(uint64_t n)
{
    if (n >= BUFFER) return std::to_string(n / BUFFER) + " MiB";
    return n >= 1024 ? std::to_string(n / 1024) + " KiB" : std::to_string(n) + " B";
}

/* ---- Plain files ---- */

static void bench_plain(const std::string &data, uint64_t step)
{
    compare(
        "write plain, " + size_name(step), static_cast<double>(data.size()) / 1e6, "MB/s", 1.0,
        [&] {
            sysfile_t *file = our_open(false, SYSFILE_PLAIN);
            int32_t res = 0;
            for (uint64_t at = 0; at < data.size(); at += step) sysenv_fwrite(file, data.data() + at, 1, step, &res);
            require(sysenv_fclose(&file) == 0 && res == 0, "write");
        },
        [&] {
            const peer_file file = peer_open("wb");
            for (uint64_t at = 0; at < data.size(); at += step) std::fwrite(data.data() + at, 1, step, file.fp);
            peer_close(file);
        });
    std::vector<char> room(step);
    compare(
        "read plain, " + size_name(step), static_cast<double>(data.size()) / 1e6, "MB/s", 1.0,
        [&] {
            sysfile_t *file = our_open(true, SYSFILE_PLAIN);
            int32_t res = 0;
            for (uint64_t at = 0; at < data.size(); at += step) sysenv_fread(file, room.data(), 1, step, &res);
            require(sysenv_fclose(&file) == 0 && res == 0, "read");
        },
        [&] {
            const peer_file file = peer_open("rb");
            for (uint64_t at = 0; at < data.size(); at += step)
                require(std::fread(room.data(), 1, step, file.fp) == step, "fread");
            peer_close(file);
        });
}

static void bench_all_plain()
{
    heading("Plain files", "C library");
    const std::string data = sample(PLAIN_BYTES, "\n");
    for (const uint64_t step : {uint64_t{16}, uint64_t{256}, uint64_t{4096}, uint64_t{65536}, BUFFER, 8 * BUFFER})
        bench_plain(data, step);
}

/* ---- Gzip files ---- */

static void bench_gzip(const std::string &data, uint64_t step)
{
    compare(
        "write gzip, " + size_name(step), static_cast<double>(data.size()) / 1e6, "MB/s", 1.0,
        [&] {
            sysfile_t *file = our_open(false, SYSFILE_GZIP);
            int32_t res = 0;
            for (uint64_t at = 0; at < data.size(); at += step) sysenv_fwrite(file, data.data() + at, 1, step, &res);
            require(sysenv_fclose(&file) == 0 && res == 0, "write");
        },
        [&] {
            gzFile file = peer_gzopen("wb");
            for (uint64_t at = 0; at < data.size(); at += step)
                (void)gzwrite(file, data.data() + at, static_cast<unsigned>(step));
            require(gzclose(file) == Z_OK, "gzwrite");
        });
    std::vector<char> room(step);
    compare(
        "read gzip, " + size_name(step), static_cast<double>(data.size()) / 1e6, "MB/s", 1.0,
        [&] {
            sysfile_t *file = our_open(true, SYSFILE_GZIP);
            int32_t res = 0;
            for (uint64_t at = 0; at < data.size(); at += step) sysenv_fread(file, room.data(), 1, step, &res);
            require(sysenv_fclose(&file) == 0 && res == 0, "read");
        },
        [&] {
            gzFile file = peer_gzopen("rb");
            for (uint64_t at = 0; at < data.size(); at += step)
                require(gzread(file, room.data(), static_cast<unsigned>(step)) == static_cast<int>(step), "gzread");
            (void)gzclose(file);
        });
}

static void bench_all_gzip()
{
    heading("Gzip files", "zlib");
    const std::string data = sample(GZIP_BYTES, "\n");
    for (const uint64_t step : {uint64_t{256}, uint64_t{65536}, BUFFER}) bench_gzip(data, step);
}

/* ---- Lines and text ---- */

static void bench_lines(const char *name, const std::string &data, uint64_t capacity)
{
    const peer_file out = peer_open("wb");
    std::fwrite(data.data(), 1, data.size(), out.fp);
    peer_close(out);
    const auto num_lines = static_cast<double>(std::count(data.begin(), data.end(), '\n'));
    std::vector<char> room(capacity);
    compare(
        name, num_lines, "ns", 1.0,
        [&] {
            sysfile_t *file = our_open(true, SYSFILE_PLAIN);
            int32_t res = 0;
            uint64_t length = 0;
            while (res == 0) sysenv_fgetslen(file, capacity, &length, room.data(), &res);
            sysenv_fclose(&file);
        },
        [&] {
            const peer_file file = peer_open("rb");
            char *line = nullptr;
            size_t size = 0;
            while (getline(&line, &size, file.fp) >= 0) {}
            std::free(line);
            peer_close(file);
        });
}

static void bench_all_lines()
{
    heading("Lines", "getline");
    const std::string data = sample(PLAIN_BYTES, "\n");
    bench_lines("lines, room for 4 KiB", data, 4096);
    bench_lines("lines, room for 2 MiB", data, 2 * BUFFER);
    bench_lines("lines, CR LF", sample(PLAIN_BYTES, "\r\n"), 4096);
}

static std::vector<std::string> split(const std::string &data)
{
    std::vector<std::string> lines;
    for (size_t at = 0; at < data.size();) {
        const size_t end = std::min(data.find('\n', at), data.size() - 1) + 1;
        lines.push_back(data.substr(at, end - at));
        at = end;
    }
    return lines;
}

/* The peer is given the line ends that we make. */
static void bench_text()
{
    heading("Text", "C library");
    const std::vector<std::string> lines = split(sample(PLAIN_BYTES / 4, "\n"));
    const std::vector<std::string> peer_lines = split(sample(PLAIN_BYTES / 2, "\r\n"));
    compare(
        "text by lines, fputs", static_cast<double>(lines.size()), "ns", 1.0,
        [&] {
            sysfile_t *file = our_open(false, SYSFILE_PLAIN);
            for (const std::string &line : lines) (void)sysenv_fputs(file, line.c_str());
            require(sysenv_fclose(&file) == 0, "fputs");
        },
        [&] {
            const peer_file file = peer_open("wb");
            for (size_t i = 0; i < lines.size(); ++i) std::fputs(peer_lines[i].c_str(), file.fp);
            peer_close(file);
        });
    compare(
        "formatted lines, fprintf", static_cast<double>(lines.size()), "ns", 0,
        [&] {
            sysfile_t *file = our_open(false, SYSFILE_PLAIN);
            for (size_t i = 0; i < lines.size(); ++i) (void)sysenv_fformat(file, "x%d %.9g\n", 7, double(i) / 7);
            require(sysenv_fclose(&file) == 0, "fformat");
        },
        [&] {
            const peer_file file = peer_open("wb");
            for (size_t i = 0; i < lines.size(); ++i) std::fprintf(file.fp, "x%d %.9g\r\n", 7, double(i) / 7);
            peer_close(file);
        });
}

/* ---- Memory ---- */

static const int NUM_PAIRS = 200000;

/* Keeps the compiler from taking a pair away, on both sides alike. */
static void touch(void *block) { __asm__ volatile("" : : "r"(block) : "memory"); }

static void peer_pairs(size_t size, int num)
{
    for (int i = 0; i < num; ++i) {
        void *block = std::malloc(size);
        touch(block);
        std::free(block);
    }
}

static void our_pairs(memman *man, size_t size, int num)
{
    for (int i = 0; i < num; ++i) {
        void *block = memman_malloc("cpub_bench", __LINE__, man, 1, size);
        touch(block);
        memman_free("cpub_bench", __LINE__, man, block);
    }
}

static void bench_memory_plain(size_t size)
{
    compare(
        "memory plain, " + size_name(size), NUM_PAIRS, "ns", size > 256 ? 1.05 : 1.15,
        [&] { our_pairs(sys->memman, size, NUM_PAIRS); }, [&] { peer_pairs(size, NUM_PAIRS); });
}

static void bench_memory_debug(size_t num_live)
{
    sysenv *debug = sysenv_create("cpub_bench", __LINE__, 1, nullptr);
    require(debug != nullptr, "sysenv_create");
    std::vector<void *> live(num_live);
    for (void *&block : live) block = memman_malloc("cpub_bench", __LINE__, debug->memman, 1, 64);
    const int num = NUM_PAIRS / 10;
    compare(
        "memory debug, " + std::to_string(num_live) + " live, newest", num, "ns", 0,
        [&] { our_pairs(debug->memman, 64, num); }, [&] { peer_pairs(64, num); });
    /* The oldest block is the one at the far end of the list. */
    const int num_far = num_live > 1000 ? 20 : num / 10;
    size_t at = 0;
    compare(
        "memory debug, " + std::to_string(num_live) + " live, oldest", num_far, "ns", 0,
        [&] {
            for (int i = 0; i < num_far; ++i) {
                void *&oldest = live[at++ % num_live];
                memman_free("cpub_bench", __LINE__, debug->memman, oldest);
                oldest = memman_malloc("cpub_bench", __LINE__, debug->memman, 1, 64);
            }
        },
        [&] { peer_pairs(64, num_far); });
    for (void *block : live) memman_free("cpub_bench", __LINE__, debug->memman, block);
    (void)sysenv_delete("cpub_bench", __LINE__, &debug);
}

static void bench_all_memory()
{
    heading("Memory: allocate and release", "malloc");
    for (const size_t size : {size_t{16}, size_t{256}, size_t{4096}}) bench_memory_plain(size);
    for (const size_t num_live : {size_t{10}, size_t{1000}, size_t{100000}}) bench_memory_debug(num_live);
}

static bool is_wanted(const std::string &group, const char *name) { return group.empty() || group == name; }

int main(int argc, char **argv)
{
    const std::string folder = argc > 1 ? argv[1] : "/tmp";
    if (argc > 2) rounds = std::max(1, static_cast<int>(std::strtol(argv[2], nullptr, 10)));
    path = folder + "/cpub_bench." + std::to_string(getpid());
    sys = sysenv_create("cpub_bench", __LINE__, 0, nullptr);
    require(sys != nullptr, "sysenv_create");

    const std::string group = argc > 3 ? argv[3] : "";
    if (is_wanted(group, "plain")) bench_all_plain();
    if (is_wanted(group, "gzip")) bench_all_gzip();
    if (is_wanted(group, "lines")) bench_all_lines();
    if (is_wanted(group, "text")) bench_text();
    if (is_wanted(group, "memory")) bench_all_memory();

    (void)std::remove(path.c_str());
    (void)sysenv_delete("cpub_bench", __LINE__, &sys);
    return 0;
}
