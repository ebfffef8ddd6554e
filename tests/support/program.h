// Runs of real programs.
#pragma once

#include <string>
#include <vector>

namespace tests {

/// Copies a program of TESTS_STARTED into a folder under another name; its host path.
std::string copy_program(const std::string& program, const std::string& folder,
                         const std::string& name);

/// Runs a program to its end and gives what it prints on standard output. A program that fails
/// fails the test.
std::string output_of(const std::string& file, const std::vector<std::string>& arguments = {});

struct Run {
    int code;  ///< exit code, or -1 for a program that was killed or didn't start
    std::string out, err;
};

/// Runs a program to its end with `input` on its standard input.
Run run(const std::string& file, const std::vector<std::string>& arguments,
        const std::string& input = "");

}  // namespace tests
