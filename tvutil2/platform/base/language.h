// Says what is wrong when a program is compiled for an older language, before anything else does.
#pragma once

#if !defined(__cplusplus) || __cplusplus < 202002L
#error "tvutil2 needs C++20: compile with -std=c++20 or later"
#endif
