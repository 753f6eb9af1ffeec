#include "tour.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cstdio>
#include <filesystem>

#include "arrangement_query.h"
#include "composition.h"

namespace vdevice {
namespace {

using Print = std::function<void(const std::string &)>;

constexpr Milliseconds kChangeTimeout{4000};

/** A mark with transparent and half-transparent parts, drawn without fonts. */
bool write_logo(const std::string &path) {
    QImage logo(160, 96, QImage::Format_ARGB32);
    logo.fill(Qt::transparent);
    QPainter painter(&logo);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 0, 96);
    gradient.setColorAt(0, QColor(255, 210, 60));
    gradient.setColorAt(1, QColor(230, 90, 30, 160));
    painter.setPen(QPen(Qt::white, 3));
    painter.setBrush(gradient);
    painter.drawRoundedRect(QRectF(18, 18, 124, 60), 16, 16);
    QPainterPath triangle;
    triangle.addPolygon(QPolygonF({{66, 32}, {66, 64}, {98, 48}, {66, 32}}));
    painter.fillPath(triangle, Qt::white);
    painter.end();
    return logo.save(QString::fromStdString(path), "PNG");
}

class Walk {
public:
    Walk(const DeviceOptions &options, std::string folder, Print print)
        : m_options(options), m_folder(std::move(folder)), m_print(std::move(print)) {}

    int run() {
        std::filesystem::create_directories(m_folder);
        for (const TourPart &part : tour_parts())
            walkPart(part);
        return m_faults;
    }

private:
    void walkPart(const TourPart &part) {
        DeviceOptions options = m_options;
        options.framebuffer.width = part.width;
        options.framebuffer.height = part.height;
        options.prepare = [](const RootPaths &paths) {
            write_logo(paths.tmp() + std::string(kTourLogo).substr(4));
        };
        Device device;
        std::string error;
        if (!device.start(options, &error)) {
            fault(error);
            return;
        }
        for (const TourStep &step : part.steps)
            walkStep(device, step);
        if (!device.survey()) fault("the keepalive survey was not answered");
        if (!device.running()) fault("the process ended:\n" + device.standardError());
    }

    void walkStep(Device &device, const TourStep &step) {
        QImage before = device.settledLayer();
        for (const TourMessage &message : step.messages) {
            const std::string error = send(device, message);
            if (!error.empty()) fault(std::string(message.method) + ": " + error);
        }
        for (int i = 0; i < step.pictures; ++i) {
            const auto changed = [&before](const QImage &layer) { return layer != before; };
            if (!device.waitForPixels(changed, kChangeTimeout)) {
                fault(std::string(step.name) + ": nothing changed on the layer");
            }
            before = device.settledLayer();
            savePicture(device, before, step, i);
        }
    }

    std::string send(Device &device, const TourMessage &message) {
        switch (message.sender) {
            case Sender::kClient:
                return rpc_error(
                    device.request(rpc_request(++m_lastId, message.method, message.params)));
            case Sender::kCodec:
                return device.publishCodec(rpc_notification(message.method, message.params))
                           ? ""
                           : "not published";
            case Sender::kStream:
                return device.publishStream(rpc_notification(message.method, message.params))
                           ? ""
                           : "not published";
        }
        return "";
    }

    void savePicture(Device &device, const QImage &layer, const TourStep &step, int index) {
        const auto arrangement = query_arrangement(
            [&device](const std::string &message) { return device.request(message); });
        if (!arrangement) fault(std::string(step.name) + ": the device does not tell its split");
        const QImage picture =
            compose(test_video(arrangement.value_or(Arrangement()), layer.size()), layer);
        char number[16];
        std::snprintf(number, sizeof number, "%02d-", ++m_pictures);
        std::string name = number + std::string(step.name);
        if (step.pictures > 1) name += "-" + std::to_string(index + 1);
        const std::string path = m_folder + "/" + name + ".png";
        if (!picture.save(QString::fromStdString(path), "PNG")) fault(path + ": not written");
        m_print(path + "  " + step.title);
    }

    void fault(const std::string &text) {
        ++m_faults;
        m_print("fault: " + text);
    }

    const DeviceOptions &m_options;
    std::string m_folder;
    Print m_print;
    int m_faults = 0;
    int m_pictures = 0;
    int m_lastId = 0;
};

}  // namespace

int walk_tour(const DeviceOptions &options, const std::string &folder, const Print &print) {
    return Walk(options, folder, print).run();
}

}  // namespace vdevice
