// The command-line program as a shell sees it: arguments and input in; exit code and output out.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/program.h"

namespace tests {

/// "@" in an argument is `folder`.
inline Run tvutil_in(const std::string& folder, std::vector<std::string> arguments,
                     const std::string& input = "") {
    for (auto& argument : arguments) {
        for (auto at = argument.find('@'); at != std::string::npos;
             at = argument.find('@', at + folder.size())) {
            argument.replace(at, 1, folder);
        }
    }
    return run(TESTS_TVUTIL, arguments, input);
}

inline Run tvutil(const std::vector<std::string>& arguments, const std::string& input = "") {
    return run(TESTS_TVUTIL, arguments, input);
}

struct Answer {
    std::vector<std::string> arguments;
    std::string input;
    int code;
    std::string out = {};  ///< "*": some text, whatever it says
};

/// Runs each; a success prints no error, and what isn't a yes, a no or a loss says why.
inline void expect_answers(const std::string& folder, const std::vector<Answer>& answers) {
    for (const auto& [arguments, input, code, out] : answers) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto run = tvutil_in(folder, arguments, input);
        EXPECT_EQ(run.code, code) << run.err;
        if (out == "*") {
            EXPECT_NE(run.out, "");
        } else {
            EXPECT_EQ(run.out, out);
        }
        if (code == 0 || (code >= 2 && code <= 4)) {
            EXPECT_EQ(run.err.empty(), code == 0) << run.err;
        }
    }
}

}  // namespace tests
