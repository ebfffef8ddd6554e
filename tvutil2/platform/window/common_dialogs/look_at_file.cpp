#include "tvutil2/platform/window/common_dialogs/look_at_file.h"

#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/shell_link.h"
#include "tvutil2/platform/window/common_dialogs/file_rows.h"

namespace tvutil2 {
namespace {

FolderEntry look_at_one(const std::u16string& path) {
    FolderEntry entry{path};
    const auto attributes = GetFileAttributesW(path.c_str());
    entry.is_there = attributes != INVALID_FILE_ATTRIBUTES;
    entry.is_folder = entry.is_there && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const auto folder = path.substr(0, path.rfind(u'\\') + 1);
    entry.has_folder = GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES;
    return entry;
}

}  // namespace

bool may_be_link(const std::u16string& path) {
    const auto extension = extension_of(FolderEntry{last_part(path)});
    return extension == u"LNK" || extension == u"DESKTOP";
}

FolderEntry look_at_file(const std::u16string& path, const NameReading& reading) {
    auto entry = look_at_one(path);
    const bool has_dot = last_part(path).find(u'.') != std::u16string::npos;
    if (!entry.is_there && !reading.extension.empty() && !has_dot) {
        entry = look_at_one(std::u16string(path).append(u".").append(reading.extension));
    }
    if (!reading.follows_links || !entry.is_there || !may_be_link(entry.name)) return entry;
    const auto target = link_target(entry.name);
    return target ? look_at_one(*target) : entry;
}

}  // namespace tvutil2
