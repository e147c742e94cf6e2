#pragma once

#include <QString>
#include <QStringList>

#include <filesystem>

namespace kivo {

/// A program's entry among those that the desktop starts at login: a file in the user's autostart
/// directory, by the desktop entry specification.
class LoginItem {
  public:
    struct Program {
        QString id;          ///< the file's name without ".desktop": "app.example"
        QString name;        ///< as desktops list it
        QString comment;     ///< one line
        QStringList command; ///< the executable's absolute path, then its arguments, unquoted
        QString icon;
    };

    /// `directory` is $XDG_CONFIG_HOME/autostart; it is made when it is needed.
    LoginItem(const std::filesystem::path& directory, Program program);

    /// The user's own autostart directory.
    static std::filesystem::path userDirectory();

    /// Whether the desktop starts the program. Reads the file: others may write it too. An entry
    /// that is there but switched off, as desktops' own tools leave it, counts as none, as does
    /// what lies behind another user's link.
    bool isEnabled() const;
    /// Writes the entry whole or not at all, for the user alone: whoever could write it would run
    /// what they like at the next login. Or removes it. False when that failed, also since another
    /// user's link leads there.
    bool setEnabled(bool isEnabled);

    const std::filesystem::path& file() const { return entry; }

  private:
    QString contents() const;

    std::filesystem::path entry;
    Program program;
};

/// A command line as the key "Exec" takes it: arguments quoted where they need it, and nothing in
/// them expanded.
QString desktopEntryCommand(const QStringList& command);

} // namespace kivo
