#pragma once

#include <QProcessEnvironment>
#include <QStringList>

#include <filesystem>

namespace kivo {

/// Starts a program that goes on by itself, in a session of its own. It reads, prints and complains
/// into nothing: whoever waits for the end of what this process prints would otherwise wait for
/// the end of that one, too. False when it could not be started.
bool startDetached(const std::filesystem::path& program, const QStringList& arguments,
                   const QProcessEnvironment& environment =
                       QProcessEnvironment(QProcessEnvironment::InheritFromParent));

} // namespace kivo
