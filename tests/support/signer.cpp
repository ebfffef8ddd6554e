#include "tests/support/signer.h"

#include "tvutil2/platform/trust/sign_file.h"
#include "tvutil2/platform/trust/trust_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/executable_image.h"
#include "tests/support/profile.h"

namespace tests {
namespace {

void shell(const std::string& folder, const std::string& commands) {
    const auto line = "set -e; cd " + folder + "; { " + commands + "; } >log 2>&1";
    ASSERT_EQ(std::system(line.c_str()), 0) << read_file(folder + "/log");
}

}  // namespace

Signer make_signer(const std::string& name, int days, const std::string& usage) {
    const auto folder = new_folder();
    const std::string new_key = " -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes ";
    shell(folder, "openssl req -x509" + new_key +
                      "-keyout root.key -out root.pem -days 30 -subj '/CN=Root of " + name +
                      "' -addext basicConstraints=critical,CA:TRUE; "
                      "openssl req" +
                      new_key + "-keyout leaf.key -out leaf.csr -subj '/O=Somebody/CN=" + name +
                      "'; printf 'keyUsage=digitalSignature\\nextendedKeyUsage=" + usage +
                      "\\n' >extensions; openssl x509 -req -in leaf.csr -CA root.pem -CAkey "
                      "root.key -extfile extensions -out leaf.pem -days " +
                      std::to_string(days) + "; cat leaf.pem root.pem >chain.pem");
    return {folder + "/chain.pem", folder + "/leaf.key", folder + "/root.pem"};
}

std::string signed_pe(const Signer& signer, const std::string& options) {
    const auto folder = new_folder();
    auto image = pe_image();
    image.put(88 + 60, std::uint32_t{512});  // the size of the headers
    write_file(folder + "/plain.exe", image.all());
    shell(folder, "osslsigncode sign -h sha256 -certs " + signer.certificates + " -key " +
                      signer.key + " " + options + " -in plain.exe -out signed.exe");
    return folder + "/signed.exe";
}

std::string signed_elf(const Signer& signer) {
    const auto file = new_folder() + "/signed.exe";
    write_file(file, elf_image().all());
    sign_program(file, signer);
    return file;
}

void sign_program(const std::string& file, const Signer& signer) {
    EXPECT_EQ(tvutil2::sign_elf_file(file, file,
                                     {read_file(signer.certificates), read_file(signer.key), ""}),
              "");
}

void trust(const Signer& signer) {
    namespace fs = std::filesystem;
    const auto folder = tvutil2::trust_folder();
    const auto file = folder + "/root.pem";
    fs::create_directories(folder);
    fs::copy_file(signer.root, file, fs::copy_options::overwrite_existing);
    // Whatever the umask is.
    fs::permissions(folder, fs::perms::owner_all);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace tests
