// The passwords that the host remembers between sessions: on the disk sealed only.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>

namespace terminal {

// A file of its own below the data folder, its key in another that only the user may read. (A terminal for customers takes
// the key from the system's key ring.)
//
// Threads: any. Without OpenSSL it remembers nothing, counted as "password_store_failed", as is every file that
// cannot be read or written.
class PasswordStore {
  public:
    explicit PasswordStore(const std::filesystem::path& folder)
        : m_file(folder / "passwords.dat"), m_keyFile(folder / "passwords.key") {}

    // "get_passInfo": of {"UserName": ...} the passwords of that user, {account key: {"Password", "TxPassword",
    // "DynamicPassword"}}; "{}" when there are none.
    std::string Get(const std::string& params);
    // "save_passInfo": {"useraccount": ..., "accountList": as Get answers} replaces those of the user. Accounts without any
    // password are forgotten.
    void Save(const std::string& params);

  private:
    std::string _key(bool mayMake);
    std::string _read();
    bool _write(const std::string& text);

    const std::filesystem::path m_file, m_keyFile;
    std::mutex m_mutex;
};

}  // namespace terminal
