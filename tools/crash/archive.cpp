#include "tools/crash/archive.h"

#include <zip.h>

#include <memory>

namespace crash {
namespace {

namespace fs = std::filesystem;

struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, Discard>;

bool add(zip_t* archive, const fs::path& file, const std::string& name) {
    zip_source_t* const source = zip_source_file(archive, file.c_str(), 0, -1);
    if (source == nullptr) return false;
    if (zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8) >= 0) return true;
    zip_source_free(source);
    return false;
}

// It is written when it is closed, into a file beside it.
bool write(const fs::path& folder, const std::string& name, const fs::path& file) {
    Archive archive(zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr));
    if (!archive) return false;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (!entry->is_regular_file(error)) continue;
        const auto inside = name + "/" + entry->path().filename().string();
        if (!add(archive.get(), entry->path(), inside)) return false;
    }
    if (error || zip_close(archive.get()) != 0) return false;
    static_cast<void>(archive.release());
    return true;
}

}  // namespace

bool pack(const fs::path& folder, const std::string& name, const fs::path& archive) {
    auto draft = archive.parent_path() / ".";
    draft += archive.filename();
    std::error_code error;
    bool is_made = write(folder, name, draft);
    if (is_made) {
        fs::rename(draft, archive, error);
        is_made = !error;
    }
    if (!is_made) fs::remove(draft, error);
    return is_made;
}

}  // namespace crash
