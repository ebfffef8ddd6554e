#include "tvutil2/platform/window/common_dialogs/file_record.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

constexpr DWORD kToldFlags = OFN_READONLY | OFN_EXTENSIONDIFFERENT;

// The name behind the last backslash begins there.
std::size_t name_in(const std::u16string& path) {
    return path.rfind(u'\\') + 1;
}

// The folder that all of them lie in, with a backslash at its end; empty for several drives.
std::u16string common_folder(const std::vector<std::u16string>& paths) {
    auto folder = paths[0].substr(0, name_in(paths[0]));
    for (const auto& path : paths) {
        while (!path.starts_with(folder)) {
            folder.pop_back();
            folder.erase(name_in(folder));
        }
    }
    return folder;
}

// Every drive lies somewhere below the first one.
void put_on_one_drive(std::vector<std::u16string>& paths) {
    for (auto& path : paths) {
        const auto host = host_path(path, Lookup::none);
        if (!host) continue;
        path = u"C:" + to_utf16_lossy(*host);
        std::ranges::replace(path, u'/', u'\\');
    }
}

// What goes into lpstrFile, without the last zero: one path, or a folder, and the rest of each path
// behind it.
std::u16string in_buffer(std::vector<std::u16string> paths) {
    if (paths.size() == 1) return paths[0];
    auto folder = common_folder(paths);
    if (folder.empty()) {
        put_on_one_drive(paths);
        folder = common_folder(paths);
    }
    constexpr std::size_t kRoot = 3;
    auto text = folder.size() > kRoot ? folder.substr(0, folder.size() - 1) : folder;
    for (const auto& path : paths) text += u'\0' + path.substr(folder.size());
    return text + u'\0';
}

bool put_paths(OPENFILENAMEW& asked, const std::u16string& text) {
    if (text.size() < asked.nMaxFile) {
        asked.lpstrFile[text.copy(asked.lpstrFile, text.size())] = 0;
        return true;
    }
    if (asked.nMaxFile > 0) {
        *asked.lpstrFile = static_cast<char16_t>(std::min<std::size_t>(text.size() + 1, 0xFFFF));
    }
    return false;
}

// The extension's place in a name; 0 for none.
std::size_t extension_in(const std::u16string& name) {
    const auto dot = name.rfind(u'.');
    return dot != std::u16string::npos && dot > 0 && dot + 1 < name.size() ? dot + 1 : 0;
}

}  // namespace

bool put_choice(OPENFILENAMEW& asked, const ChosenNames& chosen) {
    const auto text = in_buffer(chosen.paths);
    if (!put_paths(asked, text)) return false;
    const auto& first = chosen.paths[0];
    const bool several = chosen.paths.size() > 1;
    const auto name = first.substr(name_in(first));
    const auto extension = extension_in(name);
    asked.nFileOffset = static_cast<WORD>(several ? text.find(u'\0') + 1 : name_in(first));
    asked.nFileExtension =
        extension > 0 && !several ? static_cast<WORD>(asked.nFileOffset + extension) : WORD{0};
    asked.nFilterIndex = static_cast<DWORD>(chosen.filter + 1);
    const bool is_read_only = chosen.is_read_only.value_or((asked.Flags & OFN_READONLY) != 0);
    const bool differs = extension > 0 && asked.lpstrDefExt != nullptr && *asked.lpstrDefExt != 0 &&
                         _wcsicmp(name.c_str() + extension, asked.lpstrDefExt) != 0;
    asked.Flags &= ~kToldFlags;
    asked.Flags |= (is_read_only ? OFN_READONLY : 0) | (differs ? OFN_EXTENSIONDIFFERENT : 0);
    if (asked.lpstrFileTitle != nullptr && asked.nMaxFileTitle > 0) {
        asked.lpstrFileTitle[name.copy(asked.lpstrFileTitle, asked.nMaxFileTitle - 1)] = 0;
    }
    return true;
}

RecordAtFirst::RecordAtFirst(OPENFILENAMEW& asked)
    : m_asked(asked), m_at_first(asked), m_file(asked.lpstrFile, asked.nMaxFile) {
    if (asked.lpstrFileTitle != nullptr) m_title.assign(asked.lpstrFileTitle, asked.nMaxFileTitle);
}

// Only what a choice puts there: the rest is the caller's, who may have other buffers now.
RecordAtFirst::~RecordAtFirst() {
    if (m_is_kept) return;
    m_file.copy(m_asked.lpstrFile, m_asked.nMaxFile);
    if (m_asked.lpstrFileTitle != nullptr) {
        m_title.copy(m_asked.lpstrFileTitle, m_asked.nMaxFileTitle);
    }
    m_asked.nFileOffset = m_at_first.nFileOffset;
    m_asked.nFileExtension = m_at_first.nFileExtension;
    m_asked.nFilterIndex = m_at_first.nFilterIndex;
    m_asked.Flags = (m_asked.Flags & ~kToldFlags) | (m_at_first.Flags & kToldFlags);
}

}  // namespace tvutil2
