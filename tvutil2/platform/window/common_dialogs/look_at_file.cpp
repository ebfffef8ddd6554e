#include "tvutil2/platform/window/common_dialogs/look_at_file.h"

#include "tvutil2/platform/files/files.h"

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

FolderEntry look_at_file(const std::u16string& path, const std::u16string& extension) {
    auto entry = look_at_one(path);
    const auto name = path.substr(path.rfind(u'\\') + 1);
    if (entry.is_there || extension.empty() || name.find(u'.') != std::u16string::npos) {
        return entry;
    }
    return look_at_one(std::u16string(path).append(u".").append(extension));
}

}  // namespace tvutil2
