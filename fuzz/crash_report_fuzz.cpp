// Reports of crashes that nobody's helper wrote.
//
// Laws: whatever stands there can be shown as text; what is shown of a thread comes behind its
// line.
#include "fuzz/fuzz_input.h"
#include "tools/crash/report_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const crash::Report report({reinterpret_cast<const char*>(data), size});
    for (const auto& fact : report.facts()) fuzz::require(fact.find('=') != std::string::npos);
    const auto stacks = report.stacks();
    fuzz::require(stacks.empty() || stacks.front().ends_with("thread:"));
    // No more than stands there: a frame has its braces, a thread too.
    fuzz::require(stacks.size() <= size);
    fuzz::require(!report.empty() || (report.facts().empty() && stacks.empty()));
    return 0;
}
