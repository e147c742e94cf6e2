#include "TokwatchCore/Limits/SecurityCLICredentialSource.h"

#include "TokwatchCore/Limits/CredentialFile.h"

#include <QCoroFuture>
#include <QProcess>
#include <QPromise>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <optional>
#include <unistd.h>

namespace tokwatch {
namespace {

/// The tool's exit status for an item that does not exist.
constexpr int itemNotFound = 44;

/// Far beyond any password; what prints more is not the tool that we meant.
constexpr std::size_t longestOutput = 16'000'000;

} // namespace

/// One run of the tool.
class SecurityCLICredentialSource::ToolRun {
  public:
    ToolRun(const std::filesystem::path& executable, const std::string& service, Seconds timeout) {
        done.start();
        process = std::make_unique<QProcess>();
        process->setProgram(QString::fromStdString(executable.string()));
        process->setArguments(
            {"find-generic-password", "-s", QString::fromStdString(service), "-w"});
        process->setStandardInputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
        // A group of its own, so that what the tool starts can be ended with it.
        process->setChildProcessModifier([] { ::setpgid(0, 0); });

        QObject::connect(process.get(), &QProcess::readyReadStandardOutput, &context,
                         [this] { read(); });
        QObject::connect(process.get(), &QProcess::finished, &context,
                         [this](int exitCode, QProcess::ExitStatus status) {
                             finish(status == QProcess::NormalExit ? exitCode : -1);
                         });
        QObject::connect(process.get(), &QProcess::errorOccurred, &context,
                         [this](QProcess::ProcessError error) {
                             if (error == QProcess::FailedToStart) fail(CredentialError::denied);
                         });
        QObject::connect(&deadline, &QTimer::timeout, &context,
                         [this] { end(CredentialError::denied); });
        deadline.setSingleShot(true);
        deadline.start(std::chrono::ceil<std::chrono::milliseconds>(timeout));
        process->start(QIODevice::ReadOnly);
    }

    QFuture<void> finished() const { return done.future(); }

    /// Ends it at once. Not to be called from the run's own signals.
    void cancel() {
        end(CredentialError::denied);
        process->waitForFinished();
    }

    /// To be asked once, when finished.
    std::string takeOutput() {
        if (failure) throw CredentialError(*failure);
        return std::move(output);
    }

  private:
    void read() {
        const QByteArray bytes = process->readAllStandardOutput();
        output.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (output.size() > longestOutput) end(CredentialError::malformed);
    }

    void finish(int exitCode) {
        read();
        if (exitCode == itemNotFound) return fail(CredentialError::notFound);
        if (exitCode != 0) return fail(CredentialError::denied);
        complete();
    }

    /// Kills the tool; the run is over when it is reaped.
    void end(CredentialError::Reason reason) {
        if (!failure) failure = reason;
        output = {};
        const auto id = static_cast<pid_t>(process->processId());
        if (id > 0) ::kill(-id, SIGKILL);
        process->kill();
    }

    void fail(CredentialError::Reason reason) {
        if (!failure) failure = reason;
        complete();
    }

    void complete() {
        deadline.stop();
        process->disconnect(&context);
        done.finish();
    }

    QPromise<void> done;
    QObject context;
    QTimer deadline;
    std::unique_ptr<QProcess> process;
    std::string output;
    std::optional<CredentialError::Reason> failure;
};

SecurityCLICredentialSource::SecurityCLICredentialSource(std::filesystem::path tool, Seconds limit)
    : executable(std::move(tool)), timeout(limit) {}

SecurityCLICredentialSource::~SecurityCLICredentialSource() {
    for (const std::weak_ptr<ToolRun>& run : runs) {
        if (const auto underWay = run.lock()) underWay->cancel();
    }
}

QCoro::Task<std::string> SecurityCLICredentialSource::keychainSecret(std::string service) {
    const auto run = std::make_shared<ToolRun>(executable, service, timeout);
    std::erase_if(runs, [](const auto& ended) { return ended.expired(); });
    runs.push_back(run);

    // The source may be gone when this returns, hence nothing of it is used below.
    const QFuture<void> finished = run->finished();
    co_await finished;
    std::string secret = checkedText(run->takeOutput());
    while (!secret.empty() && (secret.back() == '\n' || secret.back() == '\r'))
        secret.pop_back();
    co_return secret;
}

std::string SecurityCLICredentialSource::fileData(const std::filesystem::path& file) {
    return readCredentialFile(file);
}

} // namespace tokwatch
