/* process_posix.cpp - runs a program with its outputs on pipes, under a time limit. */
#include "process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using clock_type = std::chrono::steady_clock;

/* Longest wait between two looks at the clock: how exact delays are. */
static const int TICK_MS = 5;

struct running {
    pid_t pid = -1;
    int out = -1; /* our ends of the pipes; -1: at their end */
    int err = -1;
    clock_type::time_point start;
    std::vector<double> due_s; /* when each signal is sent; negative: its text has not been seen yet */
    process_result result;
};

static double elapsed_s(const running *run)
{
    return std::chrono::duration<double>(clock_type::now() - run->start).count();
}

/* ---- The child ---- */

static std::vector<char *> argument_list(const std::string &program, const process_options &options)
{
    std::vector<char *> list;
    list.push_back(const_cast<char *>(program.c_str()));
    for (const std::string &arg : options.args) list.push_back(const_cast<char *>(arg.c_str()));
    list.push_back(nullptr);
    return list;
}

static void redirect(const char *path, int flags, int target)
{
    const int file = open(path, flags, 0666);
    if (file < 0 || dup2(file, target) < 0) _exit(126);
    close(file);
}

static void limit_memory(int64_t bytes)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    (void)bytes; /* they reserve far more than they use */
#else
    const rlimit limit = {static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    if (bytes > 0 && setrlimit(RLIMIT_AS, &limit) != 0) _exit(126);
#endif
}

/* Ends in the program, or with the status that shells give to one that cannot be started. */
[[noreturn]] static void child_run(const std::string &program, const process_options &options, int out, int err)
{
    redirect("/dev/null", O_RDONLY, STDIN_FILENO);
    if (options.output.empty()) {
        dup2(out, STDOUT_FILENO);
    } else {
        redirect(options.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    }
    dup2(err, STDERR_FILENO);
    for (const auto &[name, value] : options.environment) {
        if (value.empty()) {
            unsetenv(name.c_str());
        } else {
            setenv(name.c_str(), value.c_str(), 1);
        }
    }
    if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) _exit(126);
    limit_memory(options.memory_bytes);
    std::vector<char *> list = argument_list(program, options);
    execv(program.c_str(), list.data());
    _exit(127);
}

/* Starts the program. False: no pipes. */
static bool start(const std::string &program, const process_options &options, running *run)
{
    int out[2] = {-1, -1};
    int err[2] = {-1, -1};
    if (pipe2(out, O_CLOEXEC) != 0) return false;
    if (pipe2(err, O_CLOEXEC) != 0) {
        close(out[0]);
        close(out[1]);
        return false;
    }
    run->start = clock_type::now();
    run->pid = fork();
    if (run->pid == 0) child_run(program, options, out[1], err[1]);
    close(out[1]);
    close(err[1]);
    run->out = out[0];
    run->err = err[0];
    run->result.started = run->pid > 0;
    for (const process_signal &item : options.signals) {
        run->due_s.push_back(item.text.empty() ? item.after_s : -1);
    }
    return true;
}

/* ---- The parent ---- */

/* Takes what is there. At the end of the pipe closes it and clears *end. */
static void take_output(int *end, std::string *text)
{
    char piece[65536];
    const ssize_t length = read(*end, piece, sizeof piece);
    if (length > 0) {
        text->append(piece, static_cast<size_t>(length));
    } else if (length == 0 || errno != EINTR) {
        close(*end);
        *end = -1;
    }
}

static void send_signals(running *run, const process_options &options)
{
    const double now_s = elapsed_s(run);
    for (size_t i = 0; i < run->due_s.size(); ++i) {
        const process_signal &item = options.signals[i];
        if (run->due_s[i] < 0 && run->result.out.find(item.text) != std::string::npos) {
            run->due_s[i] = now_s + item.after_s;
        }
        if (run->due_s[i] >= 0 && now_s >= run->due_s[i]) {
            kill(run->pid, item.number);
            run->due_s[i] = options.limit_s * 2; /* never again */
        }
    }
}

static void listen(running *run)
{
    pollfd ends[2] = {{run->out, POLLIN, 0}, {run->err, POLLIN, 0}};
    const int wait_ms = run->out < 0 && run->err < 0 ? 1 : TICK_MS; /* with both ended it is gone at once */
    if (poll(ends, 2, wait_ms) <= 0) return;
    if (ends[0].revents != 0) take_output(&run->out, &run->result.out);
    if (ends[1].revents != 0) take_output(&run->err, &run->result.err);
}

/* Waits for the end. The pipes may end earlier, or later where the program has left children behind. */
static int watch(running *run, const process_options &options)
{
    int status = 0;
    while (waitpid(run->pid, &status, WNOHANG) == 0) {
        send_signals(run, options);
        if (elapsed_s(run) > options.limit_s && !run->result.timed_out) {
            run->result.timed_out = true;
            kill(run->pid, SIGKILL);
        }
        listen(run);
    }
    for (pollfd rest = {run->out, POLLIN, 0}; run->out >= 0 && poll(&rest, 1, 0) > 0;) {
        take_output(&run->out, &run->result.out);
    }
    for (pollfd rest = {run->err, POLLIN, 0}; run->err >= 0 && poll(&rest, 1, 0) > 0;) {
        take_output(&run->err, &run->result.err);
    }
    return status;
}

process_result process_run(const std::string &program, const process_options &options)
{
    running run;
    if (!start(program, options, &run)) return run.result;
    const int status = run.result.started ? watch(&run, options) : 127 << 8;
    if (run.out >= 0) close(run.out);
    if (run.err >= 0) close(run.err);

    process_result *result = &run.result;
    result->wall_s = elapsed_s(&run);
    result->status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result->signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result->started = result->status != 126 && result->status != 127;
    return run.result;
}
