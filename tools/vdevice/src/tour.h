/**
 * @file tour.h
 * A walk through what app_gui shows: commands, then a picture, step by step.
 */
#ifndef VDEVICE_TOUR_H
#define VDEVICE_TOUR_H

#include <cstddef>
#include <string>
#include <vector>

#include "device.h"

namespace vdevice {

/** Who sends a message of a step. */
enum class Sender {
    kClient,  ///< over the command socket, a reply is expected
    kCodec,   ///< as an event of the codec process
    kStream,  ///< as an event of the streaming process
};

struct TourMessage {
    Sender sender;
    const char *method;
    const char *params;  ///< JSON
};

/** One step; it ends with `pictures` pictures. */
struct TourStep {
    const char *name;   ///< of the picture file, without number and extension
    const char *title;  ///< one line for the list of pictures
    int pictures;       ///< more than one: each waits for the layer to change by itself
    std::vector<TourMessage> messages;
};

/** A device of the tour and what is shown on it. */
struct TourPart {
    unsigned width, height;  ///< of the framebuffer
    std::vector<TourStep> steps;
};

/** The whole tour. */
const std::vector<TourPart> &tour_parts();

/** Where the tour puts the picture of the picture watermark, as the device sees it. */
constexpr char kTourLogo[] = "/tmp/logo.png";

/**
 * Walks the whole tour and writes NN-name.png files.
 * @param options  the device; mode and preparation are the tour's own.
 * @param folder   made when it is not there.
 * @param print    receives one line per picture and per fault.
 * @return the number of faults: steps whose commands failed or that changed nothing.
 */
int walk_tour(const DeviceOptions &options, const std::string &folder,
              const std::function<void(const std::string &)> &print);

}  // namespace vdevice

#endif
