#include "tvutil2/platform/files/shell_link.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/link_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace tvutil2 {
namespace {

constexpr off_t kLongestFile = off_t{1} << 20;

HRESULT last_error_result() {
    return HRESULT_FROM_WIN32(GetLastError());
}

HRESULT put_text(const std::u16string& text, char16_t* out, int size) {
    if (out == nullptr || size <= 0) return E_INVALIDARG;
    const auto length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    text.copy(out, length);
    out[length] = 0;
    return S_OK;
}

HRESULT set_text(std::u16string& text, const char16_t* value) {
    text = value != nullptr ? value : u"";
    return S_OK;
}

// False with the last error set.
bool read_whole(const std::string& path, std::string& text) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0) return fail_at(path);
    if (!S_ISREG(info.st_mode) || info.st_size > kLongestFile) return fail_with(ERROR_BAD_FORMAT);
    text.resize(static_cast<std::size_t>(info.st_size));
    std::size_t filled = 0;
    while (filled < text.size()) {
        const auto size = read(file.get(), text.data() + filled, text.size() - filled);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return fail_with_errno();
        if (size == 0) break;
        filled += static_cast<std::size_t>(size);
    }
    text.resize(filled);
    return true;
}

// The file has the old content or the new one, whatever happens in between.
bool write_whole(const std::string& path, const std::string& text) {
    if (is_folder(path)) return fail_with(ERROR_ACCESS_DENIED);
    auto temporary = std::string(folder_of(path)) + "/.tvutil2-link-XXXXXX";
    const Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) return fail_at(path);
    const auto written = write(file.get(), text.data(), text.size());
    const bool is_whole = written == static_cast<ssize_t>(text.size());
    if (!is_whole && written >= 0) errno = ENOSPC;
    if (is_whole && fchmod(file.get(), 0644) == 0 && rename(temporary.c_str(), path.c_str()) == 0) {
        return true;
    }
    fail_with_errno();
    unlink(temporary.c_str());
    return false;
}

// Nothing with the last error set.
std::optional<LinkFields> read_link(const char16_t* path) {
    const auto host = host_path_of(path);
    std::string text;
    if (!host || !read_whole(*host, text)) return std::nullopt;
    auto fields = parse_link(text);
    if (!fields) SetLastError(ERROR_BAD_FORMAT);
    return fields;
}

class ShellLink final : public IShellLinkW, public IPersistFile {
  public:
    static HRESULT create(const IID& id, void** object) {
        auto* link = new (std::nothrow) ShellLink;
        if (link == nullptr) return E_OUTOFMEMORY;
        const HRESULT result = link->QueryInterface(id, object);
        link->Release();
        return result;
    }

    HRESULT QueryInterface(const IID& id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id == IID_IShellLinkW || id == IID_IUnknown) {
            *object = static_cast<IShellLinkW*>(this);
        } else if (id == IID_IPersistFile) {
            *object = static_cast<IPersistFile*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    DWORD AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    DWORD Release() override {
        const DWORD left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }

    HRESULT GetPath(char16_t* path, int size, WIN32_FIND_DATAW* data, DWORD /*flags*/) override {
        if (data != nullptr) {
            *data = {};
            const HANDLE search = FindFirstFileW(m_fields.path.c_str(), data);
            if (search != INVALID_HANDLE_VALUE) FindClose(search);
        }
        const HRESULT result = put_text(m_fields.path, path, size);
        return result == S_OK && m_fields.path.empty() ? S_FALSE : result;
    }
    HRESULT SetPath(const char16_t* path) override { return set_text(m_fields.path, path); }
    HRESULT GetDescription(char16_t* text, int size) override {
        return put_text(m_fields.description, text, size);
    }
    HRESULT SetDescription(const char16_t* text) override {
        return set_text(m_fields.description, text);
    }
    HRESULT GetArguments(char16_t* text, int size) override {
        return put_text(m_fields.arguments, text, size);
    }
    HRESULT SetArguments(const char16_t* text) override {
        return set_text(m_fields.arguments, text);
    }
    HRESULT GetHotkey(WORD* key) override {
        if (key == nullptr) return E_POINTER;
        *key = m_fields.hot_key;
        return S_OK;
    }
    HRESULT SetHotkey(WORD key) override {
        m_fields.hot_key = key;
        return S_OK;
    }
    HRESULT GetIconLocation(char16_t* path, int size, int* index) override {
        if (index == nullptr) return E_POINTER;
        *index = m_fields.icon_index;
        return put_text(m_fields.icon, path, size);
    }
    HRESULT SetIconLocation(const char16_t* path, int index) override {
        m_fields.icon_index = index;
        return set_text(m_fields.icon, path);
    }
    HRESULT Resolve(HWND /*window*/, DWORD /*flags*/) override {
        return GetFileAttributesW(m_fields.path.c_str()) != INVALID_FILE_ATTRIBUTES
                   ? S_OK
                   : last_error_result();
    }

    HRESULT Load(const char16_t* path, DWORD /*mode*/) override {
        auto fields = read_link(path);
        if (!fields) return last_error_result();
        m_fields = std::move(*fields);
        m_file = path;
        return S_OK;
    }
    HRESULT Save(const char16_t* path, BOOL remember) override {
        if (path == nullptr && m_file.empty()) return E_FAIL;
        const std::u16string file = path != nullptr ? path : m_file;
        const auto host = host_path(file);
        if (!host) return last_error_result();
        auto name = name_in(*host);
        if (name.rfind('.') != std::string_view::npos && name.rfind('.') > 0) {
            name = name.substr(0, name.rfind('.'));
        }
        if (!write_whole(*host, link_text(m_fields, name))) return last_error_result();
        if (remember != FALSE) m_file = file;
        return S_OK;
    }

  private:
    ShellLink() = default;
    ~ShellLink() = default;

    std::atomic<DWORD> m_references{1};
    LinkFields m_fields;
    std::u16string m_file;
};

const ComClass g_shell_link(CLSID_ShellLink, ShellLink::create);

}  // namespace

std::optional<std::u16string> link_target(const std::u16string& path) {
    auto fields = read_link(path.c_str());
    return fields ? std::optional(std::move(fields->path)) : std::nullopt;
}

}  // namespace tvutil2
