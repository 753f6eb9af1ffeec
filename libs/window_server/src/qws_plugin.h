/**
 * @file qws_plugin.h
 * The door through which Qt finds the integration by its name.
 */
#ifndef WINDOW_SERVER_QWS_PLUGIN_H
#define WINDOW_SERVER_QWS_PLUGIN_H

#include <qpa/qplatformintegrationplugin.h>

/** Outside the namespace: Qt's import macro wants the bare class name. */
class QwsPlugin : public QPlatformIntegrationPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QPlatformIntegrationFactoryInterface_iid FILE "qws_plugin.json")

public:
    /** @return the caller owns it. */
    QPlatformIntegration *create(const QString &system, const QStringList &parameters) override;
};

#endif
