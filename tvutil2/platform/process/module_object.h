// What a module handle stands for. Rooms that load modules of their own kind (resource images, say)
// derive from it, and GetModuleFileNameW, GetProcAddress and FreeLibrary serve them too.
#pragma once

#include "tvutil2/platform/base/handle_table.h"

#include <string>

namespace tvutil2 {

class ModuleObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::module;

    /// `file` is the host path; empty for a module without a file.
    explicit ModuleObject(std::string file)
        : HandleObject(HandleKind::module), m_file(std::move(file)) {}

    [[nodiscard]] const std::string& file() const { return m_file; }

    /// The platform path; from the host path unless the module has none.
    [[nodiscard]] virtual std::u16string path() const;
    /// Null when the module doesn't export `name`.
    [[nodiscard]] virtual FARPROC symbol(const char* /*name*/) const { return nullptr; }
    /// Null when the module exports nothing by that ordinal.
    [[nodiscard]] virtual FARPROC symbol_at(WORD /*ordinal*/) const { return nullptr; }
    /// Stays loaded whatever FreeLibrary is asked.
    [[nodiscard]] virtual bool is_permanent() const { return false; }

  private:
    std::string m_file;
};

/// Enters a module with one reference and gives its handle; null when the table is full.
[[nodiscard]] HMODULE insert_module(std::shared_ptr<ModuleObject> module);

}  // namespace tvutil2
