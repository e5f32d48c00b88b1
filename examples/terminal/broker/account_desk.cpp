#include "broker/account_desk.h"

#include <utility>

#include "base/text.h"
#include "crypto/secrets.h"

namespace terminal {
namespace {

using luadui::Gbk;

DeskPortfolio DefaultUnit(const std::string& code, const std::string& token) {
    return {"P" + token, Gbk("默认单元"), "U" + code, "", "1", token};
}

DeskAccount Opened(const char* recordId, const char* code, const char* tradeType, const char* name,
                   const char* token, const char* password, const char* txPassword) {
    DeskAccount account{recordId, code, "8", tradeType, Gbk(name), password, txPassword};
    account.alias = account.name + Gbk("_样例证券");
    account.portfolios = {DefaultUnit(code, token)};
    return account;
}

}  // namespace

AccountDesk::AccountDesk(std::string privateKey) : m_privateKey(std::move(privateKey)) {
    m_users["demo"] = {
        .id = "1",
        .accounts = {Opened("11", "1001", "1", "李明", "880001", "Plant3d-Li#7", "Plant3d-Tx!2"),
                     Opened("12", "1002", "1", "王芳", "880002", "Plant3d-Wang#4", "")},
        .others = {Opened("13", "1003", "1", "陈静", "880003", "Plant3d-Chen#9", "")},
        .groups = {{"1", Gbk("核心"), "1", "0", {"1001"}}}};
    m_users["desk"] = {
        .id = "2",
        .accounts = {Opened("21", "1001", "1", "李明", "880001", "Plant3d-Li#7", "Plant3d-Tx!2"),
                     Opened("22", "1001", "2", "李明", "990001", "Plant3d-Credit#3", ""),
                     Opened("23", "2002", "2", "赵刚", "990002", "Plant3d-Zhao#5", "")},
        .others = {},
        .groups = {}};
}

const DeskUser* AccountDesk::Find(std::string_view user) const {
    const auto found = m_users.find(user);
    return found == m_users.end() ? nullptr : &found->second;
}

bool AccountDesk::ChangePassword(std::string_view user, std::string_view key, std::string password) {
    const auto found = m_users.find(user);
    if (found == m_users.end()) return false;
    for (DeskAccount& account : found->second.accounts) {
        if (account.code + "|" + account.broker + "|" + account.tradeType != key) continue;
        account.password = std::move(password);
        return true;
    }
    return false;
}

bool AccountDesk::_matches(const std::string& password, std::string_view cipher) const {
    if (cipher.empty()) return password.empty();
    auto clear = DecryptPassword(m_privateKey, cipher);
    const bool isSame = clear && *clear == password;
    if (clear) Wipe(*clear);
    return isSame;
}

}  // namespace terminal
