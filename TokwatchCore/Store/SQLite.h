#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// As much of SQLite's C interface as the store needs, with ownership and errors: every failure is
/// a UsageStoreError with the call's result code and the connection's message.
namespace tokwatch::sqlite {

/// A prepared statement. Parameters are numbered from 1, columns from 0.
class Statement {
  public:
    Statement(sqlite3* connection, const char* sql);

    /// The text must outlive the last `step`. It may hold NULs.
    Statement& bind(int index, const std::string& text);
    Statement& bind(int index, std::string&& text) = delete;
    Statement& bind(int index, std::int64_t value);
    Statement& bind(int index, double value);
    Statement& bindNull(int index);

    /// True with a row to read, false when the statement is done.
    bool step();
    /// Runs to the end; the number of rows it changed.
    int run();
    /// Makes it ready for the next use. Bindings are kept until overwritten.
    void reset();

    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const;
    /// The same until the next step.
    std::string_view textView(int column) const;

  private:
    [[noreturn]] void fail(int code) const;

    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };
    sqlite3* connection;
    std::unique_ptr<sqlite3_stmt, Finalizer> handle;
};

enum class Access {
    readWrite, ///< creates the file where there is none
    readOnly,  ///< needs the side files of the write-ahead log, or room to make them
    immutable, ///< needs nothing but the file, which nobody changes meanwhile
};

class Connection {
  public:
    /// `file` may be ":memory:"; no link is followed, in its place or on the way there. Waits
    /// `lockPatience` for the lock of another process.
    explicit Connection(const std::string& file, Access access = Access::readWrite,
                        std::chrono::milliseconds lockPatience = std::chrono::seconds{5});
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Runs a script of statements whose rows nobody reads.
    void execute(const char* script);

    /// The statement with this text, which outlives the connection, as literals do: it is prepared
    /// once and kept, ready for new bindings. Not to be used again before the caller is done with
    /// it.
    Statement& statement(const char* sql);

    /// The first column of the first row of the statement, whose text outlives the connection; 0
    /// without one.
    std::int64_t number(const char* sql);

    /// Gives the page cache's memory back.
    void releaseMemory();

  private:
    struct Closer {
        void operator()(sqlite3* connection) const;
    };
    std::chrono::milliseconds patience; ///< known to the library by its address
    std::unique_ptr<sqlite3, Closer> handle;
    std::map<std::string_view, std::unique_ptr<Statement>> statements;
};

/// A sound database as it can be read on a disk that is full or read-only, too.
std::unique_ptr<Connection> openForReading(const std::string& file,
                                           std::chrono::milliseconds lockPatience);

/// Resets a kept statement when its reader leaves, so that no read lock outlives the read.
class Use {
  public:
    explicit Use(Statement& statement) : used(statement) {}
    ~Use() { used.reset(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Statement* operator->() const { return &used; }

  private:
    Statement& used;
};

/// An immediate transaction: takes the write lock at once, and is rolled back unless committed.
class Transaction {
  public:
    explicit Transaction(Connection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

  private:
    Connection& db;
    bool open = true;
};

} // namespace tokwatch::sqlite
