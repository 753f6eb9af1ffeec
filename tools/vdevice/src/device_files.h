/**
 * @file device_files.h
 * Where the pieces of a virtual device are found: built tree or installed system.
 */
#ifndef VDEVICE_DEVICE_FILES_H
#define VDEVICE_DEVICE_FILES_H

#include <string>
#include <vector>

namespace vdevice {

struct DeviceFiles {
    std::string program;             ///< app_gui beside this executable
    std::string shim;                ///< libfbemu.so, in ../lib or <libdir>/app_gui
    std::string config;              ///< the sample configuration
    std::vector<std::string> fonts;  ///< of the system: Latin, its bold face, Chinese
};

/** What is not found keeps the name of the place where it was looked for first. */
DeviceFiles find_device_files();

}  // namespace vdevice

#endif
