// Resources of modules: looked up by type, name and language, and read where they lie.
//
// A module's resources are `.res` images, as resource compilers write them. They are indexed when
// they are added; a look-up is a binary search. The library's own images are part of its file and
// are indexed when the first look-up asks for them. Images come from outside and are trusted in
// nothing: a malformed one is refused as a whole.
//
// A type or a name is text, compared without regard to case, or a number: MAKEINTRESOURCEW(n), or
// text of the form "#n". A null module is the executable. All functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

#include <span>
#include <string_view>

/// Types of resources.
inline const char16_t* const RT_MENU = MAKEINTRESOURCEW(4);
inline const char16_t* const RT_DIALOG = MAKEINTRESOURCEW(5);
inline const char16_t* const RT_STRING = MAKEINTRESOURCEW(6);

/// A resource in a language. What is tried in this order:
///
/// 1. the language, 2. its primary language without a sub-language, 3. the neutral language (0).
///
/// A language whose primary language is neutral leaves the choice to the system, which tries
///
/// 1. the calling thread's language, 2. its primary language without a sub-language,
/// 3. the system's default language, 4. the neutral language, 5. English (United States),
/// 6. whichever has the lowest id.
///
/// 0x0800 (the system's default) does so without the first two. Null with
/// ERROR_RESOURCE_DATA_NOT_FOUND for a module without resources, or that isn't one,
/// ERROR_RESOURCE_TYPE_NOT_FOUND, ERROR_RESOURCE_NAME_NOT_FOUND or ERROR_RESOURCE_LANG_NOT_FOUND.
TVUTIL_API HRSRC FindResourceExW(HMODULE module, const char16_t* type, const char16_t* name,
                                 WORD language);

/// FindResourceExW with the choice of language left to the system. Note the order of the two names.
TVUTIL_API HRSRC FindResourceW(HMODULE module, const char16_t* name, const char16_t* type);

/// Size in bytes; 0 with ERROR_INVALID_HANDLE when that is no resource of the module.
TVUTIL_API DWORD SizeofResource(HMODULE module, HRSRC resource);

/// Null with ERROR_INVALID_HANDLE when that is no resource of the module. There is nothing to give
/// back.
TVUTIL_API HGLOBAL LoadResource(HMODULE module, HRSRC resource);

/// Address of a loaded resource, at a multiple of 4; readable for SizeofResource bytes, for as long
/// as its image belongs to the module.
TVUTIL_API const void* LockResource(HGLOBAL resource);

/// Copies a string of the module, in the language that the system chooses, cut to `size` - 1 units,
/// with a zero: the units copied. The low 16 bits of the id count. With `size` 0, `buffer` is the
/// address of a pointer, which is set to the text inside the module (without a zero), and the
/// result is the text's length. 0, with the error of FindResourceW or
/// ERROR_RESOURCE_NAME_NOT_FOUND, when there is no such string or it is empty; `buffer` is left
/// alone then.
TVUTIL_API int LoadStringW(HINSTANCE module, UINT id, char16_t* buffer, int size);

namespace tvutil2 {

/// Adds a `.res` image to what a module has; null is the executable. What the module has already
/// wins over what is added. The image isn't copied: it stays where it is until it is removed.
/// False with ERROR_BAD_FORMAT for a malformed image, or ERROR_INVALID_PARAMETER for one that
/// doesn't lie at a multiple of 4.
TVUTIL_API bool add_module_resources(HMODULE module, const void* image, std::size_t size);

/// Removes all images that were added to a module. What was found in them is void from then on: no
/// other thread may be using it. The library's own resources stay.
TVUTIL_API void remove_module_resources(HMODULE module);

/// Bytes from an address to the end of the resource that it lies in; 0 when it lies in none.
[[nodiscard]] std::size_t bytes_in_resource(const void* address);

/// The text at an index of a block of 16 strings (RT_STRING, where the string `id` is at the index
/// `id` % 16 of the block named `id` / 16 + 1): each is its length in units (16 bits) and the
/// units. Empty where the block ends too early.
[[nodiscard]] TVUTIL_API std::u16string_view string_in_block(std::span<const std::byte> block,
                                                             unsigned int index);

}  // namespace tvutil2
