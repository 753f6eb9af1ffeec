#include "device_store.h"

#include <QCoreApplication>
#include <QTimerEvent>

#include "gui_cfg_store.h"
#include "mainwindow.h"
#include "offscreen.h"

namespace fs = std::filesystem;

namespace fuzz {
namespace {

/// Small, so that an input is painted quickly; the geometry is the same.
constexpr QSize kScreen(640, 360);

/** Calls `visit(address, size)` for all that the store's operations read or change. */
template <typename Visit>
void visit_store(Visit visit) {
    const auto array = [&](auto &object) { visit(&object, sizeof object); };
    array(data_DeviceCapabilitySet);
    array(data_VideoOutputCapabilitySet);
    array(data_VideoOutputInterface);
    array(data_AudioOutputCapabilitySet);
    array(data_VideoDecodeCapabilitySet);
    array(data_StreamingInputCapabilitySet);
    array(data_VideoOutputInterfaceParameter);
    array(data_VideoOutputScreenSplitParameter);
    array(data_VideoOutputDisplayParameter);
    array(data_VideoOutSourceChange);
    array(data_AudioOutSourceChange);
    array(data_VideoOutputOSDParameter);
    array(data_WatermarkOSDParameter);
    array(data_WatermarkPictureParameter);
    array(data_WatermarkDotmatrixParameter);
    array(data_StreamingInputStatusChange);
    array(num_VideoOutputInterface);
    array(num_VideoOutSourceChange);
    array(num_VideoOutputOSDParameter);
    array(num_WatermarkOSDParameter);
    array(num_WatermarkPictureParameter);
    array(num_WatermarkDotmatrixParameter);
    array(num_StreamingInputStatusChange);
    array(audWndIdx);
}

}  // namespace

DeviceStore::DeviceStore() {
    start_application();
    fs::copy(FUZZ_CONFIG, mFolder.path(), fs::copy_options::recursive);
    fs::create_directories(mFolder.path() / "app_parameters");
    gui_cfg::config_root = mFolder.path().string() + "/";
    require(init_parameters() == 0, "the sample device can be loaded");
    visit_store([&](void *at, size_t size) { mLoaded.append(static_cast<char *>(at), size); });
    MainWindow::instance()->resize(kScreen);
    start_process();
    display();
}

void DeviceStore::restore() {
    const char *from = mLoaded.data();
    visit_store([&](void *at, size_t size) {
        std::memcpy(at, from, size);
        from += size;
    });
    start_process();
    QCoreApplication::sendPostedEvents();
}

void DeviceStore::reload() {
    if (init_parameters() != 0) return;
    start_process();
    display();
}

void DeviceStore::replaceFile(const std::string &file, const std::string &content) const {
    mFolder.write(file, content);
}

void DeviceStore::restoreFile(const std::string &file) const {
    const fs::path original = fs::path(FUZZ_CONFIG) / file;
    if (fs::exists(original)) {
        fs::copy_file(original, mFolder.path() / file, fs::copy_options::overwrite_existing);
    } else {
        fs::remove(mFolder.path() / file);
    }
}

void DeviceStore::display() {
    MainWindow &window = *MainWindow::instance();
    QCoreApplication::sendPostedEvents();
    for (int tick = 0; tick < 4; ++tick) {
        QTimerEvent event(window.timerId);
        QCoreApplication::sendEvent(&window, &event);
    }
    paint(window, kScreen);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace fuzz
