/* recorder.cpp - record, script, handles and memory of the recorder. */
#include "recorder.h"

#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include <link.h>

struct memory_block {
    int32_t number = 0;
    const void *owner = nullptr;
    uint64_t size = 0;
    bool freed = false;
};

struct recorder_state {
    std::FILE *record = nullptr;
    std::map<std::string, std::string> numbers; /* "status 1" -> 5, "code ZLR_optimize 1" -> 10000 */
    std::map<int32_t, std::string> texts;
    std::map<std::string, std::vector<std::string>> lists;
    std::map<std::string, int64_t> calls; /* of each entry */
    int64_t num_results = 0;
    int64_t num_allocations = 0;
    std::vector<std::unique_ptr<ZLR_env>> envs;
    std::vector<std::unique_ptr<ZLR_task>> tasks;
    std::map<const void *, memory_block> blocks;
};

/* Never deleted: the program may call until its very end. */
static recorder_state *state;

/* Bytes behind each block that must stay as they are. */
static const uint64_t GUARD_BYTES = 16;
static const unsigned char GUARD = 0xA5;

/* ---- Script ---- */

static void read_script_line(const std::string &line)
{
    std::istringstream words(line);
    std::string word, key, more;
    words >> word;
    if (word == "str") {
        int32_t number = 0;
        words >> number >> std::ws;
        std::getline(words, state->texts[number]);
        return;
    }
    if (word == "evaluate" || word == "later") {
        std::getline(words >> std::ws, more);
        state->lists[word].push_back(more);
        return;
    }
    /* The last word is the value, those between it and the first are the key; a word alone is a flag. */
    std::vector<std::string> rest;
    while (words >> more) rest.push_back(more);
    if (word == "defined") rest.push_back("1");
    for (size_t i = 0; i + 1 < rest.size(); ++i) key += " " + rest[i];
    state->numbers[word + key] = rest.empty() ? "1" : rest.back();
}

static const char *script_value(const std::string &word, int64_t key)
{
    const auto found = state->numbers.find(key < 0 ? word : word + " " + std::to_string(key));
    return found != state->numbers.end() ? found->second.c_str() : nullptr;
}

int64_t script_number(const std::string &word, int64_t key, int64_t otherwise)
{
    const char *value = script_value(word, key);
    return value != nullptr ? std::strtoll(value, nullptr, 10) : otherwise;
}

const std::vector<std::string> &script_list(const std::string &word) { return state->lists[word]; }

double script_real(const std::string &word, int64_t key, double otherwise)
{
    const char *value = script_value(word, key);
    return value != nullptr ? std::strtod(value, nullptr) : otherwise;
}

void script_put_number(const std::string &word, int64_t key, int64_t value)
{
    state->numbers[word + " " + std::to_string(key)] = std::to_string(value);
}

std::string script_text(int32_t number) { return state->texts[number]; }

void script_put_text(int32_t number, const char *text) { state->texts[number] = text != nullptr ? text : ""; }

/* ---- Record ---- */

void record_line(const std::string &text)
{
    if (state->record == nullptr) return;
    std::fprintf(state->record, "%s\n", text.c_str());
    std::fflush(state->record);
}

void record_misuse(const std::string &text) { record_line("!! " + text); }

static void raise_signal(const char *entry)
{
    const int64_t number = script_number(std::string("raise ") + entry, state->calls[entry], 0);
    if (number != 0) (void)std::raise(static_cast<int>(number));
}

void record_call(const char *entry, const std::string &args)
{
    ++state->calls[entry];
    record_line(std::string(entry) + "(" + args + ")");
    raise_signal(entry);
}

int32_t record_result(const char *entry, const std::string &args)
{
    const int64_t call = ++state->calls[entry];
    const std::string key = std::string("code ") + entry;
    int64_t code = script_number("fail", ++state->num_results, 0);
    if (code == 0) code = script_number(key, call, script_number(key, 0, 0));
    record_line(std::string(entry) + "(" + args + ")" + (code != 0 ? " = " + std::to_string(code) : ""));
    raise_signal(entry);
    return static_cast<int32_t>(code);
}

/* ---- Arguments ---- */

std::string shown(const char *text)
{
    if (text == nullptr) return "null";
    std::string out = "\"";
    for (; *text != 0; ++text) out += *text == '\n' ? std::string("\\n") : std::string(1, *text);
    return out + "\"";
}

std::string shown(int32_t value) { return std::to_string(value); }
std::string shown(int64_t value) { return std::to_string(value); }
std::string shown(uint64_t value) { return std::to_string(value); }

std::string shown(double value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

std::string shown_codes(const int32_t *codes)
{
    std::string text = "{";
    for (; codes != nullptr && *codes != 0; ++codes) text += " " + std::to_string(*codes);
    return text + " }";
}

std::string shown(const void *block)
{
    if (block == nullptr) return "null";
    const auto found = state->blocks.find(block);
    return found != state->blocks.end() ? "mem" + std::to_string(found->second.number) : "foreign";
}

template <typename handle>
static std::string shown_handle(const char *name, const handle *given, const std::vector<std::unique_ptr<handle>> &all)
{
    if (given == nullptr) return "null";
    for (const auto &known : all) {
        if (known.get() != given) continue;
        const std::string text = name + std::to_string(known->number);
        if (!known->live) record_misuse(text + " used after its end");
        return text;
    }
    record_misuse(std::string("not a handle where an ") + name + " is wanted");
    return "foreign";
}

std::string shown(ZLR_env *env) { return shown_handle("env", env, state->envs); }
std::string shown(ZLR_task *task) { return shown_handle("task", task, state->tasks); }

/* ---- Handles ---- */

ZLR_env *handle_make_env()
{
    state->envs.push_back(std::make_unique<ZLR_env>());
    state->envs.back()->number = static_cast<int32_t>(state->envs.size());
    return state->envs.back().get();
}

ZLR_task *handle_make_task(ZLR_env *env)
{
    state->tasks.push_back(std::make_unique<ZLR_task>());
    state->tasks.back()->number = static_cast<int32_t>(state->tasks.size());
    state->tasks.back()->env = env;
    return state->tasks.back().get();
}

static void tell_leaks(const void *owner, const std::string &name)
{
    for (const auto &[address, block] : state->blocks) {
        if (block.owner == owner && !block.freed) {
            record_misuse("mem" + std::to_string(block.number) + " of " + name + " never freed");
        }
    }
}

void handle_end(ZLR_env *env)
{
    tell_leaks(env, shown(env));
    for (const auto &task : state->tasks) {
        if (task->live && task->env == env) record_misuse("task" + std::to_string(task->number) + " outlives its env");
    }
    env->live = false;
}

void handle_end(ZLR_task *task)
{
    tell_leaks(task, shown(task));
    task->live = false;
}

/* ---- Memory ---- */

void *memory_make(const void *owner, uint64_t size, bool may_fail)
{
    if (may_fail && script_number("nomem", -1, 0) == ++state->num_allocations) {
        record_line("no memory");
        return nullptr;
    }
    unsigned char *block = static_cast<unsigned char *>(std::calloc(size + GUARD_BYTES, 1));
    if (block == nullptr) std::abort();
    std::memset(block + size, GUARD, GUARD_BYTES);
    memory_block entry;
    entry.number = static_cast<int32_t>(state->blocks.size()) + 1;
    entry.owner = owner;
    entry.size = size;
    state->blocks[block] = entry;
    return block;
}

void memory_free(const char *entry, const void *owner, void *block)
{
    const auto found = state->blocks.find(block);
    if (found == state->blocks.end()) return;
    const std::string name = shown(block) + " in " + entry;
    if (found->second.freed) record_misuse("second free of " + name);
    if (found->second.owner != owner) record_misuse("wrong owner for " + name);
    const unsigned char *bytes = static_cast<const unsigned char *>(block);
    for (uint64_t i = 0; i < GUARD_BYTES; ++i) {
        if (bytes[found->second.size + i] != GUARD) {
            record_misuse("write beyond the end of " + name);
            break;
        }
    }
    if (!found->second.freed) std::memset(block, 0xDD, found->second.size);
    found->second.freed = true;
}

/* ---- Beginning and end ---- */

__attribute__((constructor)) static void recorder_begin()
{
    state = new recorder_state;
    const char *script = std::getenv("ZELOR_SCRIPT");
    std::ifstream lines(script != nullptr ? script : "");
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty()) read_script_line(line);
    }
    const char *record = std::getenv("ZELOR_RECORD");
    if (record != nullptr) state->record = std::fopen(record, "a");
}

__attribute__((destructor)) static void recorder_end()
{
    for (const auto &env : state->envs) {
        if (env->live) record_misuse("env" + std::to_string(env->number) + " left over");
    }
    for (const auto &task : state->tasks) {
        if (task->live) record_misuse("task" + std::to_string(task->number) + " left over");
    }
}

/* ---- The program's own memory ----
 * This library stands in front of the C library, so that these take the place of its entries for the whole process.
 * Sanitizers have their own, which win. */
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

extern "C" void *__libc_calloc(size_t count, size_t size);

struct address_range {
    uintptr_t begin = 0;
    uintptr_t end = 0;
};

/* The first object listed is the program itself. */
static int find_program(dl_phdr_info *info, size_t, void *data)
{
    address_range *range = static_cast<address_range *>(data);
    range->begin = UINTPTR_MAX;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        if (info->dlpi_phdr[i].p_type != PT_LOAD) continue;
        const uintptr_t begin = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
        if (begin < range->begin) range->begin = begin;
        if (begin + info->dlpi_phdr[i].p_memsz > range->end) range->end = begin + info->dlpi_phdr[i].p_memsz;
    }
    return 1;
}

/* Counts the program's own calls and tells when one is to fail. */
static bool program_call_fails(const char *word, int64_t *num_calls, void *caller)
{
    if (state == nullptr || script_value(word, -1) == nullptr) return false;
    address_range program;
    dl_iterate_phdr(find_program, &program);
    const uintptr_t address = reinterpret_cast<uintptr_t>(caller);
    if (address < program.begin || address >= program.end) return false;
    return ++*num_calls == script_number(word, -1, 0);
}

extern "C" ZLR_API char *strdup(const char *text) noexcept
{
    static int64_t num_calls;
    if (program_call_fails("nocopy", &num_calls, __builtin_return_address(0))) return nullptr;
    const size_t size = std::strlen(text) + 1;
    void *copy = std::malloc(size);
    return static_cast<char *>(copy != nullptr ? std::memcpy(copy, text, size) : nullptr);
}

extern "C" ZLR_API void *calloc(size_t count, size_t size) noexcept
{
    static int64_t num_calls;
    if (program_call_fails("nocalloc", &num_calls, __builtin_return_address(0))) return nullptr;
    return __libc_calloc(count, size);
}

#endif
