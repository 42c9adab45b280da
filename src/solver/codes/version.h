/* version.h - the version of the product. CMakeLists.txt has the same first three numbers. */
#pragma once

inline constexpr int version_major = 8;
inline constexpr int version_minor = 1;
inline constexpr int version_revision = 0;
inline constexpr int version_build = 1;
