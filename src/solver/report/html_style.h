/* html_style.h - the style sheet of the run report. */
#pragma once

#include <cstdint>
#include <string>

/* The sheet with the colours of a value of REPORT_THEME. */
std::string html_style(int32_t theme);
