/**
 * @file app_model_interface.h
 * The command handlers: what the command library calls by name when a message asks for it.
 *
 * Interface handlers take the interface's name, "" for every interface; channel handlers take the
 * channel's number, -1 for every channel. Buffers hold the records one after another, in store
 * order; the `...Size` companion of a Get says how many there are for a key.
 *
 * Results: 0; -2 for an invalid channel or whatever the store refuses; -4 when the device lacks the
 * feature (a `...Size` is then 0); the store's other codes unchanged. In the every-key forms the
 * first failure ends the work, and what was applied before it stays.
 *
 * Thread: the message thread, one at a time.
 */
#ifndef APP_GUI_APP_MODEL_INTERFACE_H
#define APP_GUI_APP_MODEL_INTERFACE_H

#include "exported.h"
#include "record_codec/records.h"

extern "C" {

APP_GUI_API int GetVideoOutputInterfaceParameterSize(const char *if_name);
APP_GUI_API int GetVideoOutputInterfaceParameter(const char *if_name,
                                                 VideoOutputInterfaceParameter *out);
APP_GUI_API int SetVideoOutputInterfaceParameter(const char *if_name,
                                                 const VideoOutputInterfaceParameter *in);

APP_GUI_API int GetVideoOutputScreenSplitParameterSize(const char *if_name);
APP_GUI_API int GetVideoOutputScreenSplitParameter(const char *if_name,
                                                   VideoOutputScreenSplitParameter *out);
APP_GUI_API int SetVideoOutputScreenSplitParameter(const char *if_name,
                                                   const VideoOutputScreenSplitParameter *in);

APP_GUI_API int GetWatermarkOSDParameterSize(const char *if_name);
APP_GUI_API int GetWatermarkOSDParameter(const char *if_name, WatermarkOSDParameter *out);
APP_GUI_API int SetWatermarkOSDParameter(const char *if_name, const WatermarkOSDParameter *in);

APP_GUI_API int GetWatermarkPictureParameterSize(const char *if_name);
APP_GUI_API int GetWatermarkPictureParameter(const char *if_name, WatermarkPictureParameter *out);
APP_GUI_API int SetWatermarkPictureParameter(const char *if_name,
                                             const WatermarkPictureParameter *in);

APP_GUI_API int GetWatermarkDotmatrixParameterSize(const char *if_name);
APP_GUI_API int GetWatermarkDotmatrixParameter(const char *if_name,
                                               WatermarkDotmatrixParameter *out);
APP_GUI_API int SetWatermarkDotmatrixParameter(const char *if_name,
                                               const WatermarkDotmatrixParameter *in);

APP_GUI_API int GetVideoOutputDisplayParameter(VideoOutputDisplayParameter *out);
APP_GUI_API int SetVideoOutputDisplayParameter(const VideoOutputDisplayParameter *in);

APP_GUI_API int GetVideoOutputOSDParameterSize(int channel);
APP_GUI_API int GetVideoOutputOSDParameter(int channel, VideoOutputOSDParameter *out);
APP_GUI_API int SetVideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *in);

/** The window is the record's `Channel`. */
APP_GUI_API int SetVideoOutSourceChange(const VideoOutSourceChange *in);
/** Kept: only audio output 0 is served; a record for another is ignored with 0. */
APP_GUI_API int SetAudioOutSourceChange(const AudioOutSourceChange *in);
APP_GUI_API int SetStreamingInputStatusChange(const StreamingInputStatusChange *in);
/** One interface; has no every-key form and no feature flag. */
APP_GUI_API int UploadWatermarkPicture(const char *if_name);

}  // extern "C"

#endif
