// Throw-away signers, and files that they signed.
#pragma once

#include <string>

namespace tests {

/// PEM files of a signer: his certificate and that of the root above it, his key, the root alone.
struct Signer {
    std::string certificates, key, root;
};

/// A new root and a new signer of that name. `days` less than 0 is a certificate out of date;
/// `usage` what it is for.
Signer make_signer(const std::string& name, int days = 30,
                   const std::string& usage = "codeSigning");

/// A small executable of either kind, signed; a host path in a folder of its own. A PE file is
/// signed by osslsigncode, so that ours isn't held against itself.
std::string signed_pe(const Signer& signer, const std::string& options = "");
std::string signed_elf(const Signer& signer);

/// Signs a real one, in its place.
void sign_program(const std::string& file, const Signer& signer);

/// Puts the root of a signer into the machine's trust folder, in the place of another one's.
void trust(const Signer& signer);

}  // namespace tests
