/* The run report of real runs, opened in a browser: it shows what the JSON result of the same run says, asks nobody for
 * anything, and no error is seen. Without a browser its text is checked alone. */
#include "run_support.h"
#include "support/html.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>

/* ---- The browser ---- */

struct browser_visit {
    std::string dom;                   /* the page as the browser holds it */
    std::string complaints;            /* what it has put on the console */
    std::vector<std::string> requests; /* addresses that the page has asked for over the network */
    std::string picture;               /* a PNG */
};

/* Requests for the page are told from the browser's own by the key under which they are kept apart. */
static std::vector<std::string> requests_of_page(const std::string &net_log)
{
    std::vector<std::string> found;
    const nlohmann::json log = nlohmann::json::parse(net_log, nullptr, false);
    if (!log.is_object() || !log.contains("events")) return {"the browser's log cannot be read"};
    for (const nlohmann::json &event : log["events"]) {
        const nlohmann::json params = event.value("params", nlohmann::json::object());
        const std::string key = params.value("network_isolation_key", "");
        if (key.find("file:") != std::string::npos && params.contains("url")) found.push_back(params["url"]);
    }
    return found;
}

/* Name resolution is off, so that not even the browser itself gets anywhere. */
static process_result run_browser(const temp_folder &folder, const std::string &address, const std::string &what)
{
    process_options options;
    options.folder = folder.path;
    options.output = folder.file("dom.html");
    options.args = {"-c", "exec chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
                          "--disable-background-networking --disable-component-update --disable-sync --hide-scrollbars "
                          "--disable-dev-shm-usage "
                          "--host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir=\"$PWD/profile\" "
                          "--virtual-time-budget=2000 --enable-logging=stderr --log-net-log=\"$PWD/net.json\" " +
                              what + " \"" + address + "\""};
    std::filesystem::remove_all(folder.file("profile"));
    return process_run("/bin/sh", options);
}

static std::string browse(const temp_folder &folder, const std::string &page, const std::string &what)
{
    const process_result run = run_browser(folder, "file://$PWD/" + page, what);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.err;
}

/* Whether there is a browser that shows as much as an empty page: in some closed boxes none starts. */
static bool have_browser()
{
    static const bool works = have_command("chromium") && [] {
        const temp_folder folder;
        return run_browser(folder, "about:blank", "--dump-dom").status == 0;
    }();
    return works;
}

static browser_visit visit(const temp_folder &folder, const std::string &page)
{
    browser_visit v;
    const std::string err = browse(folder, page, "--dump-dom");
    v.dom = file_read(folder.file("dom.html"));
    v.requests = requests_of_page(file_read(folder.file("net.json")));
    for (size_t at = err.find("CONSOLE"); at != std::string::npos; at = err.find("CONSOLE", at + 1))
        v.complaints += err.substr(at, err.find('\n', at) - at) + "\n";
    browse(folder, page, "--window-size=800,1200 --screenshot=\"$PWD/picture.png\"");
    v.picture = file_read(folder.file("picture.png"));
    return v;
}

/* Width and height of a PNG; 0 for anything else. */
static std::pair<uint32_t, uint32_t> png_size(const std::string &png)
{
    if (png.size() < 24 || png.substr(1, 3) != "PNG") return {0, 0};
    const auto number = [&png](size_t at) {
        uint32_t value = 0;
        for (size_t k = at; k < at + 4; k++) value = value << 8U | static_cast<unsigned char>(png[k]);
        return value;
    };
    return {number(16), number(20)};
}

/* A page that does all that a report must not do: the tests below would be worth nothing if this passed. */
TEST(report, a_browser_sees_errors_and_requests)
{
    if (!have_browser()) GTEST_SKIP() << "no chromium that starts; scripts/install-deps test gets it";
    const temp_folder folder;
    file_write(folder.file("spoiled.html"), "<!DOCTYPE html>\n<html><body><img src=\"http://asked.invalid/x.png\">"
                                            "<script>no_such_function();</script></body></html>\n");
    const browser_visit v = visit(folder, "spoiled.html");
    EXPECT_NE(v.complaints.find("no_such_function"), std::string::npos) << v.complaints;
    EXPECT_EQ(v.requests, std::vector<std::string>{"http://asked.invalid/x.png"});
}

/* ---- Runs ---- */

/* The file of a report by its run; checks what holds for every one. */
static std::string checked_report(const temp_folder &folder, const zelor_run &run)
{
    const std::string page = file_read(folder.file("r.html"));
    EXPECT_EQ(html_complaint(page), "");
    EXPECT_LT(page.size(), 100000U);
    EXPECT_EQ(html_entry_text(page, "Return code").substr(0, 5),
              (std::to_string(run.result.at("return_code").get<int>()) + " ZLR_RES").substr(0, 5));
    const auto count = [&](const char *label) { return std::atol(html_entry_text(page, label).c_str()); };
    EXPECT_EQ(count("Rows"), run.result.at("rows").get<long>());
    EXPECT_EQ(count("Columns"), run.result.at("columns").get<long>());
    EXPECT_EQ(html_entry_text(page, "Engine"), run.result.at("engine").get<std::string>());
    return page;
}

static void check_in_browser(const temp_folder &folder, const std::vector<std::string> &shown)
{
    if (!have_browser()) GTEST_SKIP() << "no chromium that starts; scripts/install-deps test gets it";
    const browser_visit v = visit(folder, "r.html");
    EXPECT_EQ(v.complaints, "");
    EXPECT_EQ(v.requests, std::vector<std::string>());
    for (const std::string &text : shown) EXPECT_NE(v.dom.find(text), std::string::npos) << text;
    EXPECT_EQ(png_size(v.picture), std::make_pair(uint32_t{800}, uint32_t{1200}));
    EXPECT_GT(v.picture.size(), 20000U) << "a blank page is a small picture";
}

TEST(report, of_a_linear_problem)
{
    const temp_folder folder;
    file_write(folder.file("m.mps"), file_read(std::string(ZELOR_SOURCE_DIR) + "/examples/transport.mps"));
    const zelor_run run =
        run_zelor(folder, {"m.mps", "-d", "REPORT_FILE", "r.html", "-d", "STAT_LABEL", "a \"label\""});
    ASSERT_EQ(run.process.status, 0) << run.process.out;
    const std::string page = checked_report(folder, run);
    EXPECT_EQ(std::atof(html_entry_text(page, "Objective").c_str()), result_number(run.result, "primal_objective"));
    EXPECT_EQ(std::atof(html_entry_text(page, "Dual objective").c_str()), result_number(run.result, "dual_objective"));
    EXPECT_NE(page.find("<pre>Solving with HiGHS"), std::string::npos) << "the log";
    check_in_browser(folder, {"<h1><bdi>TRANSPORT</bdi></h1>", "</svg>Optimal</h2>", "<dd>5300</dd>", "a \"label\"",
                              "<code>REPORT_FILE</code>", "<title>D_BAY, N_BAY: 1</title>"});
}

TEST(report, of_an_infeasible_problem_names_the_rows_of_the_proof)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"),
               "Minimize\n x\nSubject To\n low: x + y >= 3\n high: x + y <= 2\n idle: x <= 9\nEnd\n");
    const zelor_run run = run_zelor(folder, {"m.lp", "-d", "REPORT_FILE", "r.html", "-d", "PRESOLVE_LEVEL", "OFF"});
    ASSERT_EQ(run.process.status, 0) << run.process.out;
    const std::string page = file_read(folder.file("r.html"));
    EXPECT_EQ(html_complaint(page), "");
    EXPECT_EQ(html_entry_text(page, "Objective").substr(0, 8), "minimise") << "no value: the problem has none";
    for (const char *row : {"low", "high"})
        EXPECT_NE(page.find(std::string("<th scope=\"row\"><bdi>") + row + "</bdi></th>"), std::string::npos) << row;
    EXPECT_EQ(page.find("<th scope=\"row\"><bdi>idle</bdi></th>"), std::string::npos);
    check_in_browser(folder, {"</svg>Infeasible</h2>", "Rows that weigh most in the proof"});
}

TEST(report, of_names_that_hold_markup)
{
    const temp_folder folder;
    file_write(folder.file("m.mps"),
               "NAME <script>alert(1)</script>&\"q\"\nROWS\n N obj\n G <b>&\"'\n G bad\xff\x01\nCOLUMNS\n"
               " x</td><img/src=x> obj 1 <b>&\"' 1\n y&amp;\"onload='f()' obj 2 bad\xff\x01 3\nRHS\n"
               " rhs <b>&\"' 10 bad\xff\x01 6\nENDATA\n");
    const zelor_run run = run_zelor(folder, {"m.mps", "-d", "READ_MPS_FORMAT", "FREE", "-d", "REPORT_FILE", "r.html"});
    ASSERT_EQ(run.process.status, 0) << run.process.out;
    const std::string page = checked_report(folder, run);
    EXPECT_EQ(std::atof(html_entry_text(page, "Objective").c_str()), 14.0);
    check_in_browser(folder, {"&lt;script&gt;alert(1)&lt;/script&gt;&amp;\"q\"</bdi></h1>",
                              "<bdi>x&lt;/td&gt;&lt;img/src=x&gt;</bdi>", "<bdi>y&amp;amp;\"onload='f()'</bdi>",
                              "<bdi>bad\ufffd\u2401</bdi>"});
}

/* A hard problem stopped early: incumbents and bounds come one after the other. */
TEST(report, of_an_integer_problem_shows_its_progress)
{
    const temp_folder folder;
    if (!file_exists(data_path("mip/bienst2.mps.gz"))) GTEST_SKIP() << "no problem files";
    const std::string name = copy_data(folder, "mip/bienst2.mps.gz");
    const zelor_run run = run_zelor(folder, {name, "-d", "TIME_LIMIT", "4", "-d", "REPORT_FILE", "r.html"});
    ASSERT_EQ(run.result.at("return_code"), ZLR_RES_TRM_TIME_LIMIT) << run.process.out;
    const std::string page = checked_report(folder, run);
    EXPECT_TRUE(close_to(std::atof(html_entry_text(page, "Objective").c_str()),
                         result_number(run.result, "primal_objective"), 1e-9));
    EXPECT_TRUE(
        close_to(std::atof(html_entry_text(page, "Bound").c_str()), result_number(run.result, "best_bound"), 1e-9));
    EXPECT_TRUE(close_to(std::atof(html_entry_text(page, "Gap").c_str()) / 100.0,
                         result_number(run.result, "relative_gap"), 1e-3));
    check_in_browser(folder,
                     {"<figcaption>Incumbent and bound</figcaption>", "Gap, relative to the incumbent</figcaption>",
                      "Stopped at the time limit.", "class=\"line second\""});
}

/* ---- The file ---- */

TEST(report, that_cannot_be_written_is_told_and_leaves_the_solution)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), "Minimize\n x\nSubject To\n c: x >= 2\nEnd\n");
    const zelor_run run = run_zelor(folder, {"m.lp", "-d", "REPORT_FILE", "absent/r.html"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_OPEN % 256) << run.process.out;
    EXPECT_NE(run.process.out.find("absent/r.html: the run report cannot be written"), std::string::npos)
        << run.process.out;
    EXPECT_EQ(result_number(run.result, "primal_objective"), 2.0);
}

TEST(report, silent_run_leaves_a_report_with_an_empty_log)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), "Minimize\n x\nSubject To\n c: x >= 2\nEnd\n");
    const zelor_run run = run_zelor(folder, {"m.lp", "-d", "LOG_LEVEL", "0", "-d", "REPORT_FILE", "r.html"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_NE(checked_report(folder, run).find("The optimisation has printed nothing."), std::string::npos);
}
