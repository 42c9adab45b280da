/* html_text.h - texts and numbers as a page of HTML shows them.
 *
 * What comes from files and users may hold any bytes. What is appended by the functions here is well-formed UTF-8, has
 * no character that HTML forbids, and neither opens nor closes a tag. Numbers never show "nan", and have a point whatever
 * the locale of the calling program: the attributes of pictures depend on it. */
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/* Appends a text for an element's content or a quoted attribute. Bytes that are not UTF-8 and characters that HTML
 * forbids become U+FFFD, control characters but line feed and tab their pictures (U+2400 and on). */
void html_append(std::string *page, std::string_view text);
std::string html_escape(std::string_view text);

/* A name of a row, column or file as an element of its own, which keeps its direction of writing to itself. A very long
 * one is cut, with an ellipsis. */
std::string html_name(std::string_view name);

/* A dash for a value that is not known, a sign for an infinite one; else up to `digits` significant digits. */
std::string html_number(double value, int digits = 10);

/* With so many places behind the point. */
std::string html_fixed(double value, int places);

/* Two digits, for residuals: "1.2e-09", "0". */
std::string html_residual(double value);

/* Whole numbers, with narrow blanks between thousands; and short, for labels in charts: "950", "12k", "3.4M". */
std::string html_count(int64_t count);
std::string html_short_count(int64_t count);

/* "3.7 ms", "1.25 s", "75.3 s", "12 min 05 s", "3 h 07 min". */
std::string html_seconds(double time_s);

/* Appends a form with every "~" replaced by the next of the values, rounded to a tenth: for coordinates. They are finite
 * and as many as the form asks for. */
void html_append_form(std::string *page, std::string_view form, std::initializer_list<double> values);

/* "10" with the exponent as superscript digits: for the axes of charts. */
std::string html_power_of_ten(int32_t exponent);
