#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/trust/sign_file.h"
#include "tvutil2/platform/trust/signature_check.h"
#include "tvutil2/platform/trust/trust_folder.h"
#include "tvutil2/platform/trust/wincrypt.h"
#include "tvutil2/platform/trust/wintrust.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/executable_image.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"
#include "tests/support/signer.h"

namespace {

namespace fs = std::filesystem;
using tests::platform_path;
using tests::read_file;
using tests::write_file;

tvutil2::SignatureReport check(const std::string& file) {
    return tvutil2::check_signature(platform_path(file).c_str());
}

// Whether bytes in memory have an intact signature.
bool is_accepted(const std::string& bytes) {
    const tvutil2::MemoryBytes file(std::as_bytes(std::span(bytes)));
    const auto signature = tvutil2::find_signature(file, bytes.size());
    tvutil2::SignatureFacts facts;
    return signature && tvutil2::trust_module()->check(file, *signature, {}, facts) &&
           facts.integrity == tvutil2::Integrity::intact;
}

// Where the names of issuers and subjects stand in the certificates.
using Range = std::pair<std::size_t, std::size_t>;
std::vector<Range> names_in(const std::string& bytes) {
    std::vector<Range> ranges;
    const std::string name = "Root of Tolvarine Tests";
    const std::size_t head = 13;  // of the structures around it
    for (auto at = bytes.find(name); at != std::string::npos; at = bytes.find(name, at + 1)) {
        ranges.emplace_back(at - head, at + name.size());
    }
    return ranges;
}
bool is_in(const std::vector<Range>& ranges, std::size_t at) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [at](const Range& r) { return at >= r.first && at < r.second; });
}

LONG verify(const std::u16string& path, DWORD state = WTD_STATEACTION_VERIFY) {
    WINTRUST_FILE_INFO file{sizeof file, path.c_str(), nullptr, nullptr};
    WINTRUST_DATA data{};
    data.dwUIChoice = WTD_UI_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = state;
    return WinVerifyTrust(nullptr, &WINTRUST_ACTION_GENERIC_VERIFY_V2, &data);
}

TEST(Signature, TellsWhoSignedAndWhoTrustsHim) {
    const auto signer = tests::make_signer("Tolvarine Tests");
    const auto files = {tests::signed_pe(signer), tests::signed_elf(signer)};
    for (const auto& file : files) {
        const auto report = check(file);
        EXPECT_EQ(report.verdict, CERT_E_UNTRUSTEDROOT) << file;
        ASSERT_EQ(report.facts.chain.size(), 2U);
        EXPECT_EQ(report.facts.chain[0].display_name, "Tolvarine Tests");
        EXPECT_EQ(report.facts.chain[1].subject, "CN=Root of Tolvarine Tests");
        EXPECT_NE(report.facts.signing_time, 0);
        EXPECT_EQ(report.facts.digest.size(), 64U);
    }
    tests::trust(signer);
    for (const auto& file : files) EXPECT_EQ(check(file).verdict, 0) << file;
    EXPECT_EQ(check(tests::signed_elf(tests::make_signer("x", -1))).verdict, CERT_E_UNTRUSTEDROOT);
    const auto expired = tests::make_signer("x", -1);
    tests::trust(expired);
    EXPECT_EQ(check(tests::signed_elf(expired)).verdict, CERT_E_EXPIRED);
    const auto of_servers = tests::make_signer("x", 30, "serverAuth");
    tests::trust(of_servers);
    EXPECT_EQ(check(tests::signed_pe(of_servers)).verdict, CERT_E_WRONG_USAGE);
    // What others may write to is nobody's word.
    tests::trust(signer);
    ASSERT_EQ(check(*files.begin()).verdict, 0);
    ASSERT_EQ(chmod((tvutil2::trust_folder() + "/root.pem").c_str(), 0666), 0);
    EXPECT_EQ(check(*files.begin()).verdict, CERT_E_UNTRUSTEDROOT);
}

// A PE file's checksum finds every change by itself. Without it there is a change that passes: a
// certificate that names another issuer, who didn't come along. Nobody vouches for it any more.
TEST(Signature, NoByteCanBeAnotherOne) {
    const auto signer = tests::make_signer("Tolvarine Tests");
    const auto pe = read_file(tests::signed_pe(signer));
    auto without_checksum = pe;
    without_checksum.replace(88 + 64, 4, 4, '\0');
    for (auto bytes : {pe, without_checksum, read_file(tests::signed_elf(signer))}) {
        ASSERT_TRUE(is_accepted(bytes));
        const auto kind = bytes.substr(0, 2);
        const auto names = bytes == without_checksum ? names_in(bytes) : std::vector<Range>();
        for (auto& byte : bytes) {
            const auto at = static_cast<std::size_t>(&byte - bytes.data());
            const char before = byte;
            // Of the two PE files one of them, in turns: each check costs half a millisecond.
            const int flips[] = {0x01, 0x20, 0xFF};
            for (std::size_t i = 0; i < std::size(flips); ++i) {
                if (kind == "MZ" && i != at % std::size(flips)) continue;
                byte = static_cast<char>(before ^ flips[i]);
                EXPECT_TRUE(!is_accepted(bytes) || is_in(names, at)) << kind << " at " << at;
            }
            byte = before;
        }
        for (std::size_t size = 0; size < bytes.size(); size += 7) {
            EXPECT_FALSE(is_accepted(bytes.substr(0, size))) << kind << " cut to " << size;
        }
        EXPECT_FALSE(is_accepted(bytes + '\0'));
        EXPECT_FALSE(is_accepted(bytes + bytes));
    }
}

TEST(Signature, HasReasonsForNone) {
    const auto folder = tests::new_folder();
    const auto signed_file = tests::signed_elf(tests::make_signer("x"));
    const auto signed_bytes = read_file(signed_file);
    auto cut = signed_bytes;
    cut.erase(300, 1);
    const auto pe = [](std::uint32_t offset, std::uint32_t size) {
        auto image = tests::pe_image();
        image.put(88 + 96 + 32, offset);
        image.put(88 + 96 + 36, size);
        return image.all();
    };
    const struct {
        std::string content;
        LONG reason;
    } cases[] = {
        {"", TRUST_E_SUBJECT_FORM_UNKNOWN},
        {"some text", TRUST_E_SUBJECT_FORM_UNKNOWN},
        {"MZ", TRUST_E_SUBJECT_FORM_UNKNOWN},
        {tests::elf_image().all(), TRUST_E_NOSIGNATURE},
        {tests::pe_image().all(), TRUST_E_NOSIGNATURE},
        {cut, TRUST_E_MALFORMED_SIGNATURE},
        {pe(0, 1024), TRUST_E_MALFORMED_SIGNATURE},           // over the headers
        {pe(512, 512), TRUST_E_MALFORMED_SIGNATURE},          // over a section
        {pe(0xFFFFFFF8, 1032), TRUST_E_MALFORMED_SIGNATURE},  // beyond all numbers
        {pe(1024, 0), TRUST_E_MALFORMED_SIGNATURE},
    };
    for (const auto& [content, reason] : cases) {
        write_file(folder + "/x.exe", content);
        SetLastError(0);
        EXPECT_EQ(verify(platform_path(folder + "/x.exe")), TRUST_E_NOSIGNATURE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(reason)) << content.size();
    }
    EXPECT_EQ(verify(platform_path(folder + "/none")), TRUST_E_NOSIGNATURE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(verify(platform_path(folder)), TRUST_E_NOSIGNATURE);
    EXPECT_EQ(verify(platform_path(signed_file)), CERT_E_UNTRUSTEDROOT);
    EXPECT_EQ(verify(platform_path(signed_file), WTD_STATEACTION_CLOSE), 0);
    const GUID other{};
    EXPECT_EQ(WinVerifyTrust(nullptr, &other, nullptr), TRUST_E_PROVIDER_UNKNOWN);
}

// Somebody touches the file all the time, which is how one that is written to shows.
TEST(Signature, AFileThatChangesMeanwhileIsNotIntact) {
    const auto signer = tests::make_signer("x");
    const auto file = tests::signed_elf(signer);
    fs::resize_file(file, std::uintmax_t{64} << 20U);
    ASSERT_EQ(tvutil2::sign_elf_file(file, file,
                                     {read_file(signer.certificates), read_file(signer.key), ""}),
              "");
    ASSERT_EQ(check(file).verdict, CERT_E_UNTRUSTEDROOT);
    std::atomic<bool> is_over = false;
    std::thread other([&] {
        while (!is_over) utimensat(AT_FDCWD, file.c_str(), nullptr, 0);
    });
    EXPECT_EQ(check(file).verdict, TRUST_E_BAD_DIGEST);
    is_over = true;
    other.join();
}

TEST(Signature, OthersUnderstandOursAndReplaceTheirs) {
    const auto signer = tests::make_signer("x");
    const auto plain = tests::elf_image().all();
    const auto file = tests::signed_elf(signer);
    const auto bytes = read_file(file);
    const auto folder = tests::new_folder();
    write_file(folder + "/content", plain);
    write_file(folder + "/message", bytes.substr(plain.size(), bytes.size() - plain.size() - 24));
    const auto verify_with_openssl = "openssl cms -verify -binary -inform DER -purpose any -in " +
                                     folder + "/message -content " + folder + "/content -CAfile " +
                                     signer.root + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(verify_with_openssl.c_str()), 0);

    const auto other = tests::make_signer("y");
    const tvutil2::SigningIdentity identity{read_file(other.certificates), read_file(other.key),
                                            ""};
    ASSERT_EQ(chmod(file.c_str(), 0751), 0);
    EXPECT_EQ(tvutil2::sign_elf_file(file, file, identity), "");
    EXPECT_EQ(read_file(file).substr(0, plain.size()), plain);
    EXPECT_LT(read_file(file).size(), bytes.size() + 100);  // one signature, not two
    EXPECT_EQ(check(file).facts.chain.at(0).display_name, "y");
    EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(0751));
}

TEST(Signature, WhatCantBeSignedStaysAsItWas) {
    const auto signer = tests::make_signer("x");
    const auto other = tests::make_signer("y");
    const auto file = tests::signed_elf(signer);
    const auto bytes = read_file(file);
    const auto text = tests::new_folder() + "/text";
    write_file(text, "text");
    const auto certificates = read_file(signer.certificates);
    const auto key = read_file(signer.key);
    const auto sign = [](const std::string& path, const tvutil2::SigningIdentity& identity) {
        SetLastError(0);
        EXPECT_NE(tvutil2::sign_elf_file(path, path, identity), "");
        return GetLastError();
    };
    EXPECT_EQ(sign(text, {certificates, key, ""}), ERROR_INVALID_DATA);
    EXPECT_EQ(sign(file, {certificates, read_file(other.key), ""}), ERROR_INVALID_DATA);
    EXPECT_EQ(sign(file, {"", key, ""}), ERROR_INVALID_DATA);
    EXPECT_EQ(sign(file, {certificates, "", ""}), ERROR_INVALID_DATA);
    EXPECT_EQ(sign(file + "x", {certificates, key, ""}), ERROR_FILE_NOT_FOUND);
    for (const rlim_t limit : {10U, 300U, 1000U}) {
        const tests::FullDisk full(limit);
        sign(file, {certificates, key, ""});
    }
    EXPECT_EQ(read_file(file), bytes);
    EXPECT_EQ(tests::tree(fs::path(file).parent_path()).find(".tvutil2"), std::string::npos);
}

TEST(Signature, MessageTellsItsSigner) {
    const auto file = platform_path(tests::signed_pe(tests::make_signer("Tolvarine Tests")));
    HCERTSTORE store = nullptr;
    HCRYPTMSG message = nullptr;
    DWORD encoding = 0;
    ASSERT_TRUE(CryptQueryObject(
        CERT_QUERY_OBJECT_FILE, file.c_str(), CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED_EMBED,
        CERT_QUERY_FORMAT_FLAG_BINARY, 0, &encoding, nullptr, nullptr, &store, &message, nullptr));
    EXPECT_EQ(encoding, X509_ASN_ENCODING | PKCS_7_ASN_ENCODING);
    DWORD size = 0;
    ASSERT_TRUE(CryptMsgGetParam(message, CMSG_SIGNER_INFO_PARAM, 0, nullptr, &size));
    std::vector<CMSG_SIGNER_INFO> buffer(size / sizeof(CMSG_SIGNER_INFO) + 1);
    DWORD less = size - 1;
    EXPECT_FALSE(CryptMsgGetParam(message, CMSG_SIGNER_INFO_PARAM, 0, buffer.data(), &less));
    EXPECT_EQ(GetLastError(), ERROR_MORE_DATA);
    EXPECT_EQ(less, size);
    ASSERT_TRUE(CryptMsgGetParam(message, CMSG_SIGNER_INFO_PARAM, 0, buffer.data(), &size));
    CERT_INFO wanted{};
    wanted.Issuer = buffer[0].Issuer;
    wanted.SerialNumber = buffer[0].SerialNumber;
    const auto find = [&](const CERT_CONTEXT* previous) {
        return CertFindCertificateInStore(store, encoding, 0, CERT_FIND_SUBJECT_CERT, &wanted,
                                          previous);
    };
    const auto* const certificate = find(nullptr);
    ASSERT_NE(certificate, nullptr);
    const auto get = [&](char16_t* text, DWORD units) {
        return CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, text,
                                  units);
    };
    char16_t name[32] = {};
    EXPECT_EQ(get(nullptr, 0), 16U);
    EXPECT_EQ(get(name, 5), 5U);
    EXPECT_EQ(std::u16string(name), u"Tolv");
    EXPECT_EQ(get(name, 32), 16U);
    EXPECT_EQ(std::u16string(name), u"Tolvarine Tests");
    EXPECT_EQ(find(certificate), nullptr);
    EXPECT_EQ(GetLastError(), CRYPT_E_NOT_FOUND);
    wanted.SerialNumber.cbData = 0;
    EXPECT_EQ(find(nullptr), nullptr);
    EXPECT_TRUE(CertCloseStore(store, 0));
    EXPECT_FALSE(CertCloseStore(store, 0));
    EXPECT_TRUE(CryptMsgClose(message));
    EXPECT_FALSE(CryptMsgGetParam(message, CMSG_SIGNER_INFO_PARAM, 0, nullptr, &size));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
