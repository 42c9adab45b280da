/* html_style.h - the style sheet of the run report. */
#pragma once

extern const char html_style[];
