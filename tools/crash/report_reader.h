// Reports of crashes, as they are read: whatever stands in one, text comes out of it.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace crash {

/// Bytes of a report.json; a larger one isn't read.
inline constexpr std::size_t kLargestReport = std::size_t{64} << 20;

class Report {
  public:
    /// An empty report for what is no JSON object. What lies deeper than real reports go is passed
    /// over, as are members of other types than they have.
    explicit Report(std::string_view text);

    [[nodiscard]] bool empty() const { return m_json.empty(); }
    /// A member that is a text; else "".
    [[nodiscard]] std::string text(const char* key) const;
    /// What a person is shown: "key=value" for what happened, then the stacks of all threads.
    [[nodiscard]] std::vector<std::string> facts() const;
    [[nodiscard]] std::vector<std::string> stacks() const;

  private:
    nlohmann::json m_json;
};

/// The text of the report in a folder; empty when there is none, or it is too large.
[[nodiscard]] std::string report_text(const std::filesystem::path& folder);

}  // namespace crash
