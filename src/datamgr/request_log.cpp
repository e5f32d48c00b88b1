#include "datamgr/request_log.h"

#include <memory>
#include <mutex>

#include "base/counters.h"
#include "base/secret_fields.h"
#include "base/text.h"
#include "base/text_log.h"
#include "datamgr/client_log.h"

namespace luadui {
namespace {

constexpr size_t kMaxKind = 64;

// "-" keeps the places of the others.
std::string OrDash(std::string text) { return text.empty() ? "-" : text; }

std::string KindText(std::string_view kind) {
    std::string text(CutAtCharacter(kind, kMaxKind));
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte == 0x7F) c = '_';  // never the second half of a character
    }
    return OrDash(std::move(text));
}

std::string AccountText(std::string_view account) {
    if (account.empty()) return "-";
    std::string text(kSecretMask);
    if (account.size() < 8 || !IsAscii(account)) return text;
    return KindText(account.substr(0, 2)) + text + KindText(account.substr(account.size() - 2));
}

// The log of the folder that is the client's now; null while there is none, and then no file is held open.
std::shared_ptr<CTextLog> Log() {
    struct State {
        std::mutex mutex;  // guards what follows
        std::filesystem::path folder;
        std::shared_ptr<CTextLog> log;
    };
    static auto* const state = new State;  // never destroyed: threads may log until the process ends
    std::filesystem::path folder = ClientLogFolder();
    const std::lock_guard lock(state->mutex);
    if (folder != state->folder) {
        state->log = folder.empty() ? nullptr : std::make_shared<CTextLog>(folder, "request_record.log");
        state->folder.swap(folder);
    }
    return state->log;
}

}  // namespace

std::string RequestLogText(const RequestLogLine& line) {
    return "type=" + std::to_string(line.type) + " kind=" + KindText(line.kind) +
           " account=" + AccountText(line.account) +
           " ms=" + OrDash(line.durationMs < 0 ? "" : LongText(line.durationMs)) +
           " code=" + std::to_string(line.code) + " message=" + std::to_string(line.message.size());
}

bool WriteRequestLog(const RequestLogLine& line) noexcept {
    try {
        if (const auto log = Log()) return log->Write(RequestLogText(line));
        CCounters::Add("request_log_without_folder");
    } catch (...) {  // no memory
        CCounters::Add("log_write_failed");
    }
    return false;
}

}  // namespace luadui
