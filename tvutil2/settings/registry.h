// One open key of the registry: typed reads that fall back to a default, and copies and renames of
// whole keys.
//
// CRegistry is what the library uses. NUtil::CRegistry is a class of its own with the same
// operations, less three, and CPelrinRegistry begins at the terminal client's key.
//
// An object owns its handle and closes it, with one exception: copies share it, since copying
// duplicates nothing, and all but one of them must Detach before they end. Opening doesn't close
// a key held before, either; Close does.
//
// A result of type int is non-zero for success. Why a call failed isn't told, nor logged, and the
// thread's last error is left alone. An object without a key fails in all that needs one. Nothing
// throws, other than for lack of the memory that a returned text takes. An object belongs to one
// thread at a time; several objects on one key may be used from several threads.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/registry/registry.h"

namespace tvutil2 {

/// What both key classes can do. `Self` is the class that derives from it.
template <class Self>
class TVUTIL_API RegistryKey {
  public:
    RegistryKey() = default;
    RegistryKey(const RegistryKey&) = default;
    RegistryKey& operator=(const RegistryKey&) = default;
    virtual ~RegistryKey();

    /// Takes over an open key; fails if there is one already or `key` is null.
    int Attach(HKEY key);
    /// Gives the handle up without closing it.
    HKEY Detach();
    /// Opens `sub_key` with these rights (KEY_); with `create` non-zero makes it, and its missing
    /// parents, if need be. What was held before stays after a failure, and is forgotten, not
    /// closed, after a success.
    int Open(HKEY parent, const char16_t* sub_key, int create, DWORD access);
    int Open(Self* parent, const char16_t* sub_key, int create, DWORD access);
    void Close();
    /// The handle; null without a key. A null object is allowed, and gives null.
    [[nodiscard]] HKEY GetSafeHkey() const;

    /// Writes a REG_DWORD, a REG_SZ (without its zero; null is empty text) or a REG_BINARY of
    /// `size` bytes.
    int SetValue(const char16_t* name, DWORD value);
    int SetValue(const char16_t* name, const char16_t* value);
    int SetValue(const char16_t* name, const unsigned char* data, DWORD size);

    /// Reads a REG_DWORD; `value` changes with success only.
    int QueryValue(const char16_t* name, DWORD& value) const;
    /// Reads a REG_SZ of at most `count` units and puts a zero behind it, for which there must be
    /// room: `text` has `count` + 1 units.
    int QueryValue(const char16_t* name, char16_t* text, DWORD count) const;
    /// Reads a REG_BINARY; `*size` is the room going in and the size coming out, in bytes.
    int QueryValue(const char16_t* name, unsigned char* data, DWORD* size) const;

    /// A REG_SZ of at most 65536 bytes, up to its first zero; `fallback` for everything else.
    [[nodiscard]] CString GetValue(const char16_t* name, const CString& fallback) const;
    /// A REG_DWORD; `fallback` for everything else.
    [[nodiscard]] DWORD GetValue(const char16_t* name, DWORD fallback) const;

    /// The name of the sub key, or value, at `index`; `count` is the room in units, the zero
    /// included. Fails past the last one and for a name that doesn't fit.
    int EnumKey(DWORD index, char16_t* name, DWORD count) const;
    int EnumValue(DWORD index, char16_t* name, DWORD count) const;

    int DeleteValue(const char16_t* name);
    /// Deletes value after value, passes over those that can't be deleted, and ends before the
    /// first name of 1024 units or more. Gives 1 in any case.
    int DeleteAllValues();
    /// Deletes a sub key with all below it or, with `leaf_only` non-zero, only if nothing is.
    int DeleteKey(const char16_t* sub_key, int leaf_only);
    /// Copies a sub key to another name, as RegRecursiveCopy does, then deletes the old one. A key
    /// that is there under the new name is merged into: what both have becomes the old key's, the
    /// rest stays. When the copy fails the old key is untouched and the new one keeps what it got;
    /// when only the delete fails, both stay and the result is non-zero. When both names are of one
    /// key, as when only the case changes, it keeps all it has and its last part is spelled anew.
    int RenameKey(const char16_t* old_name, const char16_t* new_name);

  private:
    HKEY m_key = nullptr;
};

}  // namespace tvutil2

class TVUTIL_API CRegistry : public tvutil2::RegistryKey<CRegistry> {
  public:
    /// EnumValue, with the value's type (REG_).
    int EnumValueWithType(DWORD index, char16_t* name, DWORD count, DWORD* type) const;
    /// Deletes a sub key with all below it.
    int DeleteTree(const char16_t* sub_key);
    /// RegQueryInfoKeyW of this key, with its error code, 0 for success.
    LONG QueryInfoKey(char16_t* class_name, DWORD* class_count, DWORD* reserved, DWORD* sub_keys,
                      DWORD* longest_sub_key, DWORD* longest_class, DWORD* values,
                      DWORD* longest_value_name, DWORD* longest_data, DWORD* security_size,
                      FILETIME* last_write) const;
};

/// Copies all that lies below one open key to another, sub keys first, replacing values of the same
/// name. Stops and gives 0 at the first key that can't be opened or made with KEY_ALL_ACCESS, and
/// at the first value of more than 8192 bytes or that can't be read or written; what was copied
/// stays. A value whose name has more than 1022 units ends the values of its key without being a
/// failure. A copy into a key below `source` fails at the registry's greatest depth.
TVUTIL_API int RegRecursiveCopy(CRegistry* source, CRegistry* target);

namespace NUtil {

class TVUTIL_API CRegistry : public tvutil2::RegistryKey<CRegistry> {
  public:
    /// The same as the function of that name.
    static int RegRecursiveCopy(CRegistry* source, CRegistry* target);
};

}  // namespace NUtil

/// A key below the terminal client's, Software\Tolvarine\Pelrin\8 of the user.
class TVUTIL_API CPelrinRegistry : public CRegistry {
  public:
    /// Opens `sub_key` unless it is null, without telling how that went.
    CPelrinRegistry(const char16_t* sub_key = nullptr);

    /// Opens `sub_key` with all rights, and makes it if need be. Null or empty is the client's key
    /// itself.
    int Open(const char16_t* sub_key);
};

extern template class tvutil2::RegistryKey<CRegistry>;
extern template class tvutil2::RegistryKey<NUtil::CRegistry>;
