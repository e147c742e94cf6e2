#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(Kivo_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Kivo_SettingsPlugin)

namespace kivo {

class Setup : public QObject {
    Q_OBJECT
  public slots:
    void qmlEngineAvailable(QQmlEngine* engine) {
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    }
};

} // namespace kivo

QUICK_TEST_MAIN_WITH_SETUP(settings, kivo::Setup)

#include "SettingsQuickTests.moc"
