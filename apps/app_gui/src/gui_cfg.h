/**
 * @file gui_cfg.h
 * The parameter store: every display setting and capability figure of the device, in fixed arrays.
 *
 * Filled once at start by init_parameters() (main thread, before any other thread exists),
 * afterwards changed only by the set operations (message thread). It knows no widget: a change
 * reaches the screen through the `gui_*` functions of app_gui.h.
 *
 * Conventions of every function here: C linkage; interface names are NUL-terminated, compared over
 * at most 64 characters; records are copied whole. Results are 0 for success, -2 for a rejected
 * request, other negative values as told; `check_` functions return 1 for valid and 0 for invalid.
 */
#ifndef APP_GUI_GUI_CFG_H
#define APP_GUI_GUI_CFG_H

#include "exported.h"
#include "record_codec/records.h"

/** Elements of the arrays below. */
enum StoreCapacity {
    kMaxChannels = 16,
    kMaxInterfaces = 2,
    kMaxAudioOutputs = 3,
    kMaxSplitRecords = 8,
    kMaxOsdEntries = 64,
    kMaxStreams = 64,
    /// Set operations look at twice a channel's number (see set_VideoOutSourceChange).
    kSourceElements = 2 * kMaxChannels,
};

extern "C" {

// ---- storage ----------------------------------------------------------------------------------

APP_GUI_API extern DeviceCapabilitySet data_DeviceCapabilitySet[1];
APP_GUI_API extern VideoOutputCapabilitySet data_VideoOutputCapabilitySet[kMaxChannels];
APP_GUI_API extern VideoOutputInterface data_VideoOutputInterface[kMaxInterfaces];
APP_GUI_API extern AudioOutputCapabilitySet data_AudioOutputCapabilitySet[kMaxAudioOutputs];
APP_GUI_API extern VideoDecodeCapabilitySet data_VideoDecodeCapabilitySet[1];
APP_GUI_API extern StreamingInputCapabilitySet data_StreamingInputCapabilitySet[1];
APP_GUI_API extern VideoOutputInterfaceParameter data_VideoOutputInterfaceParameter[kMaxInterfaces];
/** `SplitParamNum` consecutive elements per interface. */
APP_GUI_API extern VideoOutputScreenSplitParameter
    data_VideoOutputScreenSplitParameter[kMaxSplitRecords];
APP_GUI_API extern VideoOutputDisplayParameter data_VideoOutputDisplayParameter[1];
/** Indexed by window; the second half is only ever read, and stays zero. */
APP_GUI_API extern VideoOutSourceChange data_VideoOutSourceChange[kSourceElements];
/** Element 0 is the one in use. */
APP_GUI_API extern AudioOutSourceChange data_AudioOutSourceChange[kMaxAudioOutputs];
/** Entry number = channel x `OSDNumPerChannel` + index. */
APP_GUI_API extern VideoOutputOSDParameter data_VideoOutputOSDParameter[kMaxOsdEntries];
APP_GUI_API extern WatermarkOSDParameter data_WatermarkOSDParameter[kMaxInterfaces];
APP_GUI_API extern WatermarkPictureParameter data_WatermarkPictureParameter[kMaxInterfaces];
APP_GUI_API extern WatermarkDotmatrixParameter data_WatermarkDotmatrixParameter[kMaxInterfaces];
APP_GUI_API extern StreamingInputStatusChange data_StreamingInputStatusChange[kMaxStreams];

APP_GUI_API extern uint32_t num_VideoOutputInterface;
APP_GUI_API extern uint32_t num_VideoOutSourceChange;
APP_GUI_API extern uint32_t num_VideoOutputOSDParameter;
APP_GUI_API extern uint32_t num_WatermarkOSDParameter;
APP_GUI_API extern uint32_t num_WatermarkPictureParameter;
APP_GUI_API extern uint32_t num_WatermarkDotmatrixParameter;
APP_GUI_API extern uint32_t num_StreamingInputStatusChange;

/** Window whose audio is played, -1 for none. */
APP_GUI_API extern int32_t audWndIdx;

// ---- accessors: addresses of first elements, and counts

APP_GUI_API VideoOutputInterface *get_ptr_VideoOutputInterface();
APP_GUI_API AudioOutputCapabilitySet *get_ptr_AudioOutputCapabilitySet();
APP_GUI_API VideoDecodeCapabilitySet *get_ptr_VideoDecodeCapabilitySet();
APP_GUI_API StreamingInputCapabilitySet *get_ptr_StreamingInputCapabilitySet();
APP_GUI_API VideoOutputInterfaceParameter *get_ptr_VideoOutputInterfaceParameter();
APP_GUI_API VideoOutputScreenSplitParameter *get_ptr_VideoOutputScreenSplitParameter();
APP_GUI_API VideoOutputDisplayParameter *get_ptr_VideoOutputDisplayParameter();
APP_GUI_API AudioOutSourceChange *get_ptr_AudioOutSourceChange();
APP_GUI_API VideoOutputOSDParameter *get_ptr_VideoOutputOSDParameter();
APP_GUI_API WatermarkOSDParameter *get_ptr_WatermarkOSDParameter();
APP_GUI_API WatermarkPictureParameter *get_ptr_WatermarkPictureParameter();
APP_GUI_API WatermarkDotmatrixParameter *get_ptr_WatermarkDotmatrixParameter();

/** Loaded interfaces. */
APP_GUI_API int get_VideoOutputInterface_size();
/** `VideoOutputChannelNum`. */
APP_GUI_API int get_VideoOutputOSDParameter_chn_size();
/** `OSDNumPerChannel` of the first interface, 0 when its `OSDSupported` is 0. */
APP_GUI_API int get_VideoOutputOSDParameter_per_chn_size();
/** `SplitParamNum` of the first interface. */
APP_GUI_API int get_VideoOutputScreenSplitParameter_per_intf_size();
/** `VideoOutputChannelNum`. */
APP_GUI_API int get_VideoOutSourceChange_chn_size();
/** `AudioOutputNum`. */
APP_GUI_API int get_AudioOutputParameter_chn_size();
/** Position of the interface of that name, or -1 after the error line "if_name=%s invalid\n". */
APP_GUI_API int get_VideoOutputInterface_intf(const char *if_name);

// ---- life

/**
 * Loads the store from the JSON files below /mnt/usr/config. Capability files must be there;
 * parameter files fall back to the factory's and then to defaults, and what fails its check is
 * repaired.
 * @return 0, or the code of the capability file that could not be used.
 */
APP_GUI_API int init_parameters();
/** Does nothing; 0. */
APP_GUI_API int uninit_parameters();
/**
 * Pushes the whole loaded state to the display; once, after the message thread was started. 0.
 * It is the state of the last prepare_start_process(), where there was one, else that of now.
 */
APP_GUI_API int start_process();
/** Does nothing; 0. */
APP_GUI_API int stop_process();

// ---- checks and defaults

/** 1 when `n` is in the numeric list, e.g. 4 in "1;3-5"; a range may be written backwards. */
APP_GUI_API int find_num(const char *list, int n);

APP_GUI_API int check_VideoOutputInterfaceParameter(const char *if_name,
                                                    const VideoOutputInterfaceParameter *record);
/** Looks at the first record only. -2 for a null argument. */
APP_GUI_API int check_VideoOutputScreenSplitParameter(
    const char *if_name, const VideoOutputScreenSplitParameter *records);
APP_GUI_API int check_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record);
APP_GUI_API int check_VideoOutputSourceParameter(int channel,
                                                 const VideoOutputSourceParameter *record);
APP_GUI_API int check_AudioOutputParameter(int output, const AudioOutputParameter *record);
/** `entries` are the channel's `OSDNumPerChannel` entries. */
APP_GUI_API int check_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries);
APP_GUI_API int check_WatermarkOSDParameter(const char *if_name,
                                            const WatermarkOSDParameter *record);
APP_GUI_API int check_WatermarkPictureParameter(const char *if_name,
                                                const WatermarkPictureParameter *record);
APP_GUI_API int check_WatermarkDotmatrixParameter(const char *if_name,
                                                  const WatermarkDotmatrixParameter *record);
APP_GUI_API int check_StreamingInputParameter(int position, const StreamingInputParameter *record);
APP_GUI_API int check_StreamingInputStatusChange(int position,
                                                 const StreamingInputStatusChange *record);

/** Defaults write the fields that they name and leave the others; 0, or -2 when they cannot run. */
APP_GUI_API int default_VideoOutputInterfaceParameter(const char *if_name,
                                                      VideoOutputInterfaceParameter *record);
/** Writes `SplitParamNum` records. */
APP_GUI_API int default_VideoOutputScreenSplitParameter(const char *if_name,
                                                        VideoOutputScreenSplitParameter *records);
/** Returns 1. */
APP_GUI_API int default_VideoOutputDisplayParameter(VideoOutputDisplayParameter *record);
APP_GUI_API int default_VideoOutputSourceParameter(int channel, VideoOutputSourceParameter *record);
APP_GUI_API int default_AudioOutputParameter(int output, AudioOutputParameter *record);
/** Writes `OSDNumPerChannel` entries. */
APP_GUI_API int default_VideoOutputOSDParameter(int channel, VideoOutputOSDParameter *entries);
APP_GUI_API int default_WatermarkOSDParameter(const char *if_name, WatermarkOSDParameter *record);
APP_GUI_API int default_WatermarkPictureParameter(const char *if_name,
                                                  WatermarkPictureParameter *record);
APP_GUI_API int default_WatermarkDotmatrixParameter(const char *if_name,
                                                    WatermarkDotmatrixParameter *record);

// ---- get: copy out of the store

APP_GUI_API int get_VideoOutputInterfaceParameter(const char *if_name,
                                                  VideoOutputInterfaceParameter *out);
/** Copies `SplitParamNum` records. */
APP_GUI_API int get_VideoOutputScreenSplitParameter(const char *if_name,
                                                    VideoOutputScreenSplitParameter *out);
APP_GUI_API int get_VideoOutputDisplayParameter(VideoOutputDisplayParameter *out);
/** Copies `OSDNumPerChannel` entries; none when OSD is not supported. */
APP_GUI_API int get_VideoOutputOSDParameter(int channel, VideoOutputOSDParameter *out);
APP_GUI_API int get_WatermarkOSDParameter(const char *if_name, WatermarkOSDParameter *out);
APP_GUI_API int get_WatermarkPictureParameter(const char *if_name, WatermarkPictureParameter *out);
APP_GUI_API int get_WatermarkDotmatrixParameter(const char *if_name,
                                                WatermarkDotmatrixParameter *out);

// ---- update: store without validation or notification; OSD and watermarks also write their file
// -------

APP_GUI_API int update_VideoOutputInterfaceParameter(const char *if_name,
                                                     const VideoOutputInterfaceParameter *record);
APP_GUI_API int update_VideoOutputScreenSplitParameter(
    const char *if_name, const VideoOutputScreenSplitParameter *records);
APP_GUI_API int update_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record);
APP_GUI_API int update_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries);
APP_GUI_API int update_WatermarkOSDParameter(const char *if_name,
                                             const WatermarkOSDParameter *record);
APP_GUI_API int update_WatermarkPictureParameter(const char *if_name,
                                                 const WatermarkPictureParameter *record);
APP_GUI_API int update_WatermarkDotmatrixParameter(const char *if_name,
                                                   const WatermarkDotmatrixParameter *record);

// ---- set: validate, compare, notify the display, store

APP_GUI_API int set_VideoOutputInterfaceParameter(const char *if_name,
                                                  const VideoOutputInterfaceParameter *record);
/** Takes `SplitParamNum` records. */
APP_GUI_API int set_VideoOutputScreenSplitParameter(const char *if_name,
                                                    const VideoOutputScreenSplitParameter *records);
APP_GUI_API int set_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record);
/** -6 when there is no memory to tell the display; nothing is stored then. */
APP_GUI_API int set_VideoOutSourceChange(int channel, const VideoOutSourceChange *record);
APP_GUI_API int set_AudioOutSourceChange(int output, const AudioOutSourceChange *record);
/** Takes `OSDNumPerChannel` entries; non-zero `silent` stores without notifying the display. */
APP_GUI_API int set_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries,
                                            int silent);
APP_GUI_API int set_WatermarkOSDParameter(const char *if_name, const WatermarkOSDParameter *record);
APP_GUI_API int set_WatermarkPictureParameter(const char *if_name,
                                              const WatermarkPictureParameter *record);
APP_GUI_API int set_WatermarkDotmatrixParameter(const char *if_name,
                                                const WatermarkDotmatrixParameter *record);
/** -6 when there is no memory to tell the display; nothing is stored then. */
APP_GUI_API int set_StreamingInputStatusChange(const StreamingInputStatusChange *record);
/** The picture file of the interface was replaced: shows it anew. */
APP_GUI_API int upload_WatermarkPicture(const char *if_name);

}  // extern "C"

/**
 * Takes the state that start_process() is to push. To be called before another thread may change
 * the store: no lock guards it.
 */
void prepare_start_process();

#endif
