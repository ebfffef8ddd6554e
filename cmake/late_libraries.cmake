# The libraries that are loaded at their first use, in one list: what is loaded, the message when it is
# missing, the note in the library's file and the package's dependencies all come from here.
#
#     variable  file  Debian package  what it is for
set(TVUTIL2_LATE_LIBRARIES "")
set(TVUTIL2_LATE_PACKAGES "")

function(tvutil2_late_library variable file package purpose)
  list(APPEND TVUTIL2_LATE_LIBRARIES "${variable}|${file}|${package}|${purpose}")
  list(APPEND TVUTIL2_LATE_PACKAGES ${package})
  list(REMOVE_DUPLICATES TVUTIL2_LATE_PACKAGES)
  set(TVUTIL2_LATE_LIBRARIES "${TVUTIL2_LATE_LIBRARIES}" PARENT_SCOPE)
  set(TVUTIL2_LATE_PACKAGES "${TVUTIL2_LATE_PACKAGES}" PARENT_SCOPE)
endfunction()

find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
string(REGEX MATCH "^[0-9]+" icu ${ICU_VERSION})
string(REGEX MATCH "^[0-9]+" openssl ${OPENSSL_VERSION})
tvutil2_late_library(crypto libcrypto.so.${openssl} libssl${openssl} "protected strings")
tvutil2_late_library(icu_common libicuuc.so.${icu} libicu${icu} "code pages and case beyond ASCII")
tvutil2_late_library(icu_collation libicui18n.so.${icu} libicu${icu} "the order of texts beyond ASCII")

# Writes the header that late_functions.cpp loads by, and a source with the ELF note that tells those who
# read dependencies from files ("ELF Notes for dlopen() Dependencies", UAPI group). Each is required:
# without it the call that needs it ends the program.
function(tvutil2_write_late_libraries header source)
  set(declarations "")
  set(entries "")
  foreach(library IN LISTS TVUTIL2_LATE_LIBRARIES)
    string(REPLACE "|" ";" fields "${library}")
    list(GET fields 0 variable)
    list(GET fields 1 file)
    list(GET fields 2 package)
    list(GET fields 3 purpose)
    string(APPEND declarations
      "inline constexpr LateLibrary k_${variable}{\"${file}\", \"${package}\"};\n")
    string(REPLACE "_" "-" feature ${variable})
    list(APPEND entries
      "{\"feature\":\"${feature}\",\"description\":\"${purpose}\",\"priority\":\"required\",\"soname\":[\"${file}\"]}")
  endforeach()
  file(CONFIGURE OUTPUT ${header} @ONLY CONTENT [[
#pragma once
struct LateLibrary {
    const char* file;
    const char* package;  ///< Debian's
};
@declarations@]])
  string(JOIN "," entries ${entries})
  string(REPLACE "\"" "\\\\\\\"" entries "${entries}")
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [[
__asm__(
    ".pushsection .note.dlopen, \"a\", %note\n"
    ".balign 4\n"
    ".long 4, 1f - 0f, 0x407c0c0a\n"
    ".asciz \"FDO\"\n"
    "0: .asciz \"[@entries@]\"\n"
    "1: .balign 4\n"
    ".popsection\n");
]])
endfunction()
