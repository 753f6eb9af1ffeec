#include "window_server/qws_platform.h"

#include <unistd.h>

#include <QByteArray>
#include <QtPlugin>

#include "qws_integration.h"
#include "qws_plugin.h"

Q_IMPORT_PLUGIN(QwsPlugin)

QPlatformIntegration *QwsPlugin::create(const QString &, const QStringList &) {
    return new qws::Integration;
}

namespace qws {
namespace {

constexpr char kPlatform[] = "linuxfb_qws";

const char *const kScalingVariables[] = {"QT_FONT_DPI", "QT_SCALE_FACTOR",
                                         "QT_SCREEN_SCALE_FACTORS", "QT_USE_PHYSICAL_DPI"};

}  // namespace

void registerPlatform() {
    // Being called is all it takes: this file, and with it the import above, is then linked.
}

void prepareEnvironment() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", kPlatform);
    if (qgetenv("QT_QPA_PLATFORM") != kPlatform) return;
    for (const char *variable : kScalingVariables)
        qunsetenv(variable);
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", "/tmp/runtime-" + QByteArray::number(getuid()));
    }
}

}  // namespace qws
