# What the scripts of this folder share. Sourced, never run; plain POSIX sh.
#
# The sourcing script has `root` set to the top of the source tree.

# shellcheck shell=sh disable=SC2154

say()
{
    printf '%s: %s\n' "${0##*/}" "$*"
}

# Says what failed and ends the script. The further arguments are lines that explain.
die()
{
    printf '%s: error: %s\n' "${0##*/}" "$1" >&2
    shift
    if [ $# -gt 0 ]; then printf '%s\n' "$@" | sed 's/^/    /' >&2; fi
    exit 1
}

# Is the command there? Nothing is printed.
have()
{
    command -v "$1" >/dev/null 2>&1
}

# configure PRESET: into build/PRESET. Done each time: it is cheap, and it is what notices a changed option.
# HIGHS_ROOT of the environment is handed on, as install-deps goes by it too.
configure()
{
    (cd "$root" && cmake --preset "$1" --log-level=WARNING ${HIGHS_ROOT:+-DHIGHS_ROOT="$HIGHS_ROOT"}) ||
        die "configuring the preset $1 failed" "the reason stands above; the folder is build/$1"
}

# build PRESET [TARGET]: without a target everything is built.
build()
{
    (cd "$root" && cmake --build "build/$1" ${2:+--target "$2"}) || die "building the preset $1 failed"
}

# run_tests PRESET [ctest option]...: runs the tests, prints their counts as the last line and gives ctest's
# status. No test at all is a failure: a filter that meets nothing checks nothing. ctest runs under the
# command in test_wrapper, if any.
run_tests()
{
    preset=$1
    shift
    results=$root/build/$preset/check.xml
    rm -f "$results"
    status=0
    # shellcheck disable=SC2086  # a command and its options
    (cd "$root" && ${test_wrapper:-} ctest --test-dir "build/$preset" --output-on-failure -j2 --no-tests=error \
        --output-junit "$results" "$@") || status=$?
    if [ -f "$results" ]; then result_line "$results"; fi
    return "$status"
}

# result_line FILE: the counts of a run of the tests as one line, from the JUnit file that ctest wrote:
# "N passed, N failed", and ", N skipped" where there are any. Disabled tests count as skipped.
result_line()
{
    awk '
        function count(name,    text) {
            if (!match($0, "[ \t]" name "=\"[0-9]+\"")) return 0
            text = substr($0, RSTART, RLENGTH)
            gsub(/[^0-9]/, "", text)
            return text + 0
        }
        # The attributes may stand on lines of their own; only those of the first element are wanted.
        /<testcase/ { exit }
        {
            all += count("tests"); failed += count("failures")
            skipped += count("skipped") + count("disabled")
        }
        END {
            printf "%d passed, %d failed", all - failed - skipped, failed
            if (skipped > 0) printf ", %d skipped", skipped
            printf "\n"
        }
    ' "$1"
}
