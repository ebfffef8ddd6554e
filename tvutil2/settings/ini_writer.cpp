#include "tvutil2/settings/ini_writer.h"

#include "tvutil2/framework/text_search.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/overwritten_file.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/settings/ini_file.h"

#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

class Utf16Bytes {
  public:
    void put(std::u16string_view text) {
        m_bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    }
    // With CR LF for each line end.
    void put_lines(std::u16string_view text) {
        for (auto end = find_unit(text, u'\n'); end != std::u16string_view::npos;
             end = find_unit(text, u'\n')) {
            put(text.substr(0, end));
            put(u"\r\n");
            text.remove_prefix(end + 1);
        }
        put(text);
    }
    std::string take() { return std::move(m_bytes); }

  private:
    std::string m_bytes;
};

// In UTF-16 with its mark. Each header stands above its keys, and what a walk meets last stands
// first.
std::string bytes_of(const CIniFile& document) {
    Utf16Bytes bytes;
    bytes.put(u"\xFEFF");
    document.sections.ForEachFromBehind([&bytes](std::u16string_view name, void* section) {
        if (section == nullptr) return;
        bytes.put(u"[");
        bytes.put_lines(name);
        bytes.put(u"]\r\n");
        const auto& values = static_cast<const CIniSection*>(section)->Values();
        values.ForEachFromBehind([&bytes](std::u16string_view key, std::u16string_view value) {
            bytes.put_lines(key);
            bytes.put(u"=");
            bytes.put_lines(value);
            bytes.put(u"\r\n");
        });
    });
    return bytes.take();
}

// The same in the ANSI code page; nothing when that doesn't hold it all.
std::optional<std::string> in_ansi_page(std::string_view utf16) {
    std::u16string_view text(reinterpret_cast<const char16_t*>(utf16.data()), utf16.size() / 2);
    text.remove_prefix(1);
    BOOL used_default = FALSE;
    auto bytes = codepage::bytes_in(CP_ACP, 0, text, "?", &used_default);
    return used_default == FALSE ? std::move(bytes) : std::nullopt;
}

bool overwrite(const char16_t* path, const ContentEdit& edit, bool flush = false) {
    const auto host = host_path_of(path);
    if (!host) return false;
    OverwrittenFile file(*host, true);
    return file && file.overwrite(edit, flush);
}

}  // namespace

bool write_ini(const char16_t* path, const CIniFile& document, IniEncoding encoding) {
    bool flush = encoding == IniEncoding::utf16_on_disk;
    auto bytes = bytes_of(document);
    if (encoding == IniEncoding::narrow) {
        if (auto narrow = in_ansi_page(bytes)) bytes = std::move(*narrow);
    }
    return overwrite(
        path, [&bytes](const std::string&) { return std::move(bytes); }, flush);
}

bool rewrite_ini(const char16_t* path, const CIniFile& document, const std::string& bytes) {
    return overwrite(path, [&](const std::string& now) -> std::optional<std::string> {
        if (now != bytes) return std::nullopt;
        return bytes_of(document);
    });
}

bool replace_ini(const char16_t* path, const CIniFile& document) {
    const auto host = host_path_of(path);
    return host &&
           replace_content(*host, true, [&](const std::string&) { return bytes_of(document); });
}

bool clear_ini(const char16_t* path) {
    return overwrite(path, [](const std::string&) { return std::string(); });
}

}  // namespace tvutil2
