#include "TokwatchCore/Store/SQLite.h"

#include "TokwatchCore/Store/NoLockWaits.h"
#include "TokwatchCore/Store/UsageStoreError.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace tokwatch::sqlite {
namespace {

UsageStoreError failure(int code, sqlite3* connection, const char* withoutHandle) {
    if (connection == nullptr) return {code, withoutHandle};
    const int kind = code & 0xff;
    const bool concernsFiles = kind == SQLITE_IOERR || kind == SQLITE_CANTOPEN;
    return {code, sqlite3_errmsg(connection), concernsFiles ? sqlite3_system_errno(connection) : 0};
}

/// The file's name as a URI, in which some characters have a meaning.
std::string uriOf(const std::string& file, const char* query) {
    std::string uri = "file:";
    for (const char c : file) {
        if (c == '%' || c == '?' || c == '#') {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02x", static_cast<unsigned char>(c));
            uri += escaped;
        } else {
            uri += c;
        }
    }
    return uri + query;
}

int openConnection(const std::string& file, Access access, sqlite3** opened) {
    // The library's sums of its memory, which nobody asks for, take a lock at each allocation. It
    // refuses where the toolkit has opened a database before us, which costs but time.
    [[maybe_unused]] static const int withoutSums = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    constexpr int always = SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_NOFOLLOW;
    switch (access) {
    case Access::readWrite:
        return sqlite3_open_v2(file.c_str(), opened,
                               SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | always, nullptr);
    case Access::readOnly:
        return sqlite3_open_v2(file.c_str(), opened, SQLITE_OPEN_READONLY | always, nullptr);
    case Access::immutable:
        return sqlite3_open_v2(uriOf(file, "?immutable=1").c_str(), opened,
                               SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | always, nullptr);
    }
    return SQLITE_MISUSE;
}

/// Called with the number of waits before. Most locks are held for a moment, some for seconds.
/// What counts is the time spent here: a process that is stopped meanwhile loses none of it.
int waitForLock(void* patience, int waits) {
    constexpr int shortWaits = 10; // of a millisecond
    constexpr int step = 10;
    const bool isShort = waits < shortWaits;
    const int waited = isShort ? waits : shortWaits + (waits - shortWaits) * step;
    const auto& all = *static_cast<const std::chrono::milliseconds*>(patience);
    if (waited >= all.count() || NoLockWaits::areInForce()) return 0;
    sqlite3_sleep(isShort ? 1 : step);
    return 1;
}

} // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* c, const char* sql) : connection(c) {
    sqlite3_stmt* prepared = nullptr;
    const int code =
        sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    handle.reset(prepared);
    if (code != SQLITE_OK || !handle) fail(code);
}

void Statement::fail(int code) const {
    throw failure(code, connection, "closed");
}

Statement& Statement::bind(int index, const std::string& text) {
    const int code = sqlite3_bind_text64(handle.get(), index, text.data(), text.size(),
                                         SQLITE_STATIC, SQLITE_UTF8);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bind(int index, std::int64_t value) {
    const int code = sqlite3_bind_int64(handle.get(), index, value);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bind(int index, double value) {
    const int code = sqlite3_bind_double(handle.get(), index, value);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bindNull(int index) {
    const int code = sqlite3_bind_null(handle.get(), index);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(handle.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    // The message belongs to the failed step; resetting may replace it.
    const UsageStoreError error = failure(code, connection, "closed");
    reset();
    throw error;
}

int Statement::run() {
    while (step()) {
    }
    const int changes = sqlite3_changes(connection);
    reset();
    return changes;
}

void Statement::reset() {
    // Its result repeats the failure that `step` has already reported.
    sqlite3_reset(handle.get());
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(handle.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(handle.get(), column);
}

std::string_view Statement::textView(int column) const {
    const unsigned char* text = sqlite3_column_text(handle.get(), column);
    if (text == nullptr) return {};
    const int length = sqlite3_column_bytes(handle.get(), column);
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

std::string Statement::text(int column) const {
    return std::string(textView(column));
}

void Connection::Closer::operator()(sqlite3* connection) const {
    sqlite3_close(connection);
}

Connection::Connection(const std::string& file, Access access,
                       std::chrono::milliseconds lockPatience)
    : patience(lockPatience) {
    sqlite3* opened = nullptr;
    const int code = openConnection(file, access, &opened);
    handle.reset(opened);
    if (code != SQLITE_OK) throw failure(code, opened, "open failed");
    if (!handle) throw UsageStoreError(SQLITE_OK, "open failed");
    sqlite3_busy_handler(handle.get(), waitForLock, &patience);
    // SQLite makes do with reading where it may not write, and would say so at the first write.
    if (access == Access::readWrite && sqlite3_db_readonly(handle.get(), "main") == 1) {
        const int reason = ::access(file.c_str(), W_OK) != 0 ? errno : 0;
        throw UsageStoreError(SQLITE_READONLY, "attempt to write a readonly database", reason);
    }
}

Connection::~Connection() {
    // Statements must go before their connection.
    statements.clear();
}

void Connection::execute(const char* script) {
    const int code = sqlite3_exec(handle.get(), script, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw failure(code, handle.get(), "closed");
}

std::int64_t Connection::number(const char* sql) {
    const Use query(statement(sql));
    return query->step() ? query->integer(0) : 0;
}

Statement& Connection::statement(const char* sql) {
    auto& kept = statements[sql];
    if (!kept) {
        try {
            kept = std::make_unique<Statement>(handle.get(), sql);
        } catch (...) {
            statements.erase(sql);
            throw;
        }
    }
    return *kept;
}

void Connection::releaseMemory() {
    sqlite3_db_release_memory(handle.get());
}

std::unique_ptr<Connection> openForReading(const std::string& file,
                                           std::chrono::milliseconds lockPatience) {
    const auto opened = [&](Access access) {
        auto db = std::make_unique<Connection>(file, access, lockPatience);
        // Opening alone does not read from the file.
        db->number("SELECT COUNT(*) FROM sqlite_schema");
        return db;
    };
    try {
        return opened(Access::readOnly);
    } catch (const UsageStoreError&) {
        // The side files are missing and cannot be made. The file alone is the whole database where
        // no write-ahead log is left to be taken into it, and no journal to be rolled back.
        for (const char* side : {"-wal", "-journal"}) {
            std::error_code none;
            if (std::filesystem::file_size(file + side, none) > 0 && !none) throw;
        }
        return opened(Access::immutable);
    }
}

Transaction::Transaction(Connection& connection) : db(connection) {
    db.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (!open) return;
    try {
        db.execute("ROLLBACK");
    } catch (const UsageStoreError&) {
        // SQLite may have rolled back by itself (disk full); the first error is the one that
        // counts.
    }
}

void Transaction::commit() {
    db.execute("COMMIT");
    open = false;
}

} // namespace tokwatch::sqlite
