#include "tvutil2/platform/resource/data_module.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/platform/process/module_object.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/system/pe_file.h"

#include <sys/stat.h>

namespace tvutil2 {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

// A `.res` image, grown resource by resource: the index reads one format, whatever the file's was.
class ImageWriter {
  public:
    ImageWriter() { add({{}, {}, 0, {}}); }

    // False when it would grow too long.
    bool add(const PeResource& resource) {
        if (m_image.size() > kMostBytes || resource.data.size() > kMostBytes) return false;
        const auto start = m_image.size();
        put(static_cast<DWORD>(resource.data.size()));
        put(DWORD{0});
        put_name(resource.type);
        put_name(resource.name);
        pad();
        put(DWORD{0});  // the data's version, then the memory's flags, which nobody reads
        put(WORD{0});
        put(resource.language);
        put(std::uint64_t{0});  // version and characteristics
        const auto size = static_cast<DWORD>(m_image.size() - start);
        m_image.replace(start + sizeof(DWORD), sizeof size, reinterpret_cast<const char*>(&size),
                        sizeof size);
        m_image.append(reinterpret_cast<const char*>(resource.data.data()), resource.data.size());
        pad();
        return true;
    }
    [[nodiscard]] std::string take() { return std::move(m_image); }

  private:
    template <class T>
    void put(T value) {
        m_image.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void put_name(const ResourceName& name) {
        if (name.text.empty()) {
            put(WORD{0xFFFF});
            put(name.id);
            return;
        }
        m_image.append(reinterpret_cast<const char*>(name.text.data()),
                       name.text.size() * sizeof(char16_t));
        put(char16_t{0});
    }
    void pad() { m_image.resize((m_image.size() + 3) & ~std::size_t{3}); }

    std::string m_image;
};

// The file's resources as a `.res` image; what is no executable is taken for one already.
bool read_resources(const std::string& path, std::string& image) {
    struct stat info {};
    if (!read_whole_file(path, info, image)) return false;
    const MemoryBytes file(std::as_bytes(std::span(image)));
    if (!is_pe_file(file)) return true;
    ImageWriter writer;
    const auto add = [&writer](const PeResource& resource) { return writer.add(resource); };
    if (!visit_pe_resources(file, add)) return false;
    image = writer.take();
    return true;
}

class DataModule : public ModuleObject {
  public:
    // Without a file: who asks for a module by the file's name wants one with code.
    explicit DataModule(std::string image) : ModuleObject(""), m_image(std::move(image)) {}
    ~DataModule() override {
        if (m_handle != nullptr) remove_module_resources(m_handle);
    }
    DataModule(const DataModule&) = delete;
    DataModule& operator=(const DataModule&) = delete;

    bool add_resources(HMODULE handle) {
        if (!add_module_resources(handle, m_image.data(), m_image.size())) return false;
        m_handle = handle;
        return true;
    }

  private:
    std::string m_image;
    HMODULE m_handle = nullptr;
};

HMODULE load_data(const char16_t* name) {
    const auto path = host_path_of(name);
    if (!path) return nullptr;
    std::string image;
    if (!read_resources(*path, image)) return nullptr;
    const auto module = std::make_shared<DataModule>(std::move(image));
    auto* const handle = insert_module(module);
    if (handle == nullptr) return nullptr;
    if (module->add_resources(handle)) return handle;
    FreeLibrary(handle);
    return fail_with(ERROR_BAD_EXE_FORMAT), nullptr;
}

}  // namespace
}  // namespace tvutil2

HMODULE LoadLibraryExW(const char16_t* name, HANDLE reserved, DWORD flags) {
    constexpr DWORD kForData = LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE |
                               LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE;
    if (flags == 0) return LoadLibraryW(name);
    if ((flags & ~kForData) != 0 || reserved != nullptr || name == nullptr || *name == 0) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    return tvutil2::load_data(name);
}
