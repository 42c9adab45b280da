/* env.cpp - environments: making and deleting them, licence settings, banner, memory. */
#include "solver/api/api.h"
#include "solver/codes/version.h"
#include "solver/engines/exit_guard.h"
#include "solver/report/banner.h"

#include <cstring>

static const char source_name[] = "src/solver/api/env"; /* in memory traces */

void api_copy_text(char *buffer, size_t capacity, std::string_view text)
{
    if (buffer == nullptr || capacity == 0) return;
    const size_t length = text.size() < capacity ? text.size() : capacity - 1;
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

int32_t ZLR_getversion(int32_t *major, int32_t *minor, int32_t *revision, int32_t *build)
{
    api_put(major, version_major);
    api_put(minor, version_minor);
    api_put(revision, version_revision);
    api_put(build, version_build);
    return ZLR_RES_OK;
}

int32_t ZLR_makeenv(ZLR_env **env, const char *dbgfile)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_POINTER;
    *env = nullptr;
    return api_guard(nullptr, [&]() -> int32_t {
        const bool debug = dbgfile != nullptr && dbgfile[0] != '\0';
        auto made = std::make_unique<ZLR_env>();
        made->sys = sysenv_create(source_name, __LINE__, debug ? 1 : 0, nullptr);
        if (made->sys == nullptr) return ZLR_RES_ERR_SPACE;
        if (debug) {
            memman_openecho(made->sys->memman, dbgfile, "memory of a ZELOR environment");
            if (made->sys->memman->echofile == nullptr) {
                (void)sysenv_delete(source_name, __LINE__, &made->sys);
                return ZLR_RES_ERR_FILE_OPEN;
            }
        }
        *env = made.release();
        return ZLR_RES_OK;
    });
}

int32_t ZLR_deleteenv(ZLR_env **env)
{
    if (env == nullptr || *env == nullptr) return ZLR_RES_OK;
    blocks_close(&(*env)->blocks, (*env)->sys);
    const int32_t res = streams_close(&(*env)->streams);
    (void)sysenv_delete(source_name, __LINE__, &(*env)->sys); /* the count of leaks is in the debug file */
    delete *env;
    *env = nullptr;
    exit_guard_arm_again();
    return res;
}

int32_t ZLR_linkfunctoenvstream(ZLR_env *env, int32_t stream, void *handle, ZLR_streamfunc func)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
    env->streams.out[stream].func = func;
    env->streams.out[stream].handle = handle;
    return ZLR_RES_OK;
}

int32_t ZLR_putlicensepath(ZLR_env *env, const char *path)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return api_guard(nullptr, [&]() -> int32_t {
        env->licence_path = path != nullptr ? path : "";
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putlicensecode(ZLR_env *env, const int32_t *code)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return api_guard(nullptr, [&]() -> int32_t {
        env->licence_codes.clear();
        for (; code != nullptr && *code != 0; ++code) env->licence_codes.push_back(*code);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putlicensewait(ZLR_env *env, int32_t wait)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    env->licence_wait = wait;
    return ZLR_RES_OK;
}

int32_t ZLR_putlicensedebug(ZLR_env *env, int32_t debug)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    env->licence_debug = debug;
    return ZLR_RES_OK;
}

int32_t ZLR_echointro(ZLR_env *env, int32_t full)
{
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return api_guard(nullptr, [&]() -> int32_t {
        banner_print(&env->streams, full != 0);
        return ZLR_RES_OK;
    });
}

void *ZLR_callocdbgenv(ZLR_env *env, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    return env != nullptr ? blocks_calloc(&env->blocks, env->sys, count, size, file, line) : nullptr;
}

void *ZLR_callocenv(ZLR_env *env, uint64_t count, uint64_t size)
{
    return ZLR_callocdbgenv(env, count, size, source_name, __LINE__);
}

void ZLR_freedbgenv(ZLR_env *env, void *block, const char *file, int32_t line)
{
    if (env != nullptr) blocks_free(&env->blocks, env->sys, block, file, line);
}

void ZLR_freeenv(ZLR_env *env, void *block) { ZLR_freedbgenv(env, block, source_name, __LINE__); }
