#include "tools/crash/report_reader.h"

#include <fstream>
#include <iterator>
#include <utility>

namespace crash {
namespace {

using Json = nlohmann::json;

constexpr int kDeepest = 8;  // levels; threads, a thread, its stack, a frame

const Json* member(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() ? &*found : nullptr;
}

std::string text_of(const Json& object, const char* key) {
    const auto* const value = member(object, key);
    return value != nullptr && value->is_string() ? value->get<std::string>() : "";
}

const Json& list_of(const Json& object, const char* key) {
    static const Json none = Json::array();
    const auto* const value = member(object, key);
    return value != nullptr && value->is_array() ? *value : none;
}

}  // namespace

Report::Report(std::string_view text)
    : m_json(Json::parse(
          text, [](int depth, Json::parse_event_t, Json&) { return depth <= kDeepest; }, false)) {
    if (!m_json.is_object()) m_json = Json::object();
}

std::string Report::text(const char* key) const {
    return text_of(m_json, key);
}

std::vector<std::string> Report::facts() const {
    std::vector<std::string> lines;
    for (const char* const key : {"application", "version", "program", "program_version", "time",
                                  "kind", "signal", "exception", "no_stacks", "picture"}) {
        if (const auto value = text(key); !value.empty()) {
            lines.push_back(std::string(key) + "=" + value);
        }
    }
    return lines;
}

std::vector<std::string> Report::stacks() const {
    std::vector<std::string> lines;
    for (const auto& thread : list_of(m_json, "threads")) {
        const auto* const crashed = member(thread, "crashed");
        lines.emplace_back(crashed != nullptr && *crashed == true ? "crashed thread:" : "thread:");
        for (const auto& frame : list_of(thread, "stack")) {
            const auto function = text_of(frame, "function");
            lines.push_back("  " + text_of(frame, "address") + "  " +
                            (function.empty() ? "?" : function) + "  " + text_of(frame, "module"));
        }
    }
    return lines;
}

std::string report_text(const std::filesystem::path& folder) {
    const auto file = folder / "report.json";
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error || size > kLargestReport) return "";
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace crash
