#include "command_call.h"

#include <dlfcn.h>

#include "record_codec/records.h"

namespace command_protocol {
namespace {

/** Addresses of a row's two handlers, null until found. */
struct Addresses {
    void *handler;
    void *companion;
};

Addresses g_addresses[kCommandCount];

void *find_symbol(const char *name, void **address) {
    if (*address == nullptr) *address = dlsym(RTLD_DEFAULT, name);
    return *address;
}

Addresses &addresses(const Command &command) {
    return g_addresses[&command - kCommands];
}

void *handler(const Command &command) {
    return find_symbol(command.name, &addresses(command).handler);
}

void *sizer(const Command &get) {
    return find_symbol(get.companion, &addresses(get).companion);
}

template <class Function>
Function *as(void *address) {
    return reinterpret_cast<Function *>(address);
}

// A handler is called through its very own type, so one row of these per record type.

template <class X>
struct ByInterface {
    static int get(void *function, const Key &key, void *out) {
        return as<int(const char *, X *)>(function)(key.if_name, static_cast<X *>(out));
    }
    static int set(void *function, const Key &key, const void *in) {
        return as<int(const char *, const X *)>(function)(key.if_name, static_cast<const X *>(in));
    }
};

template <class X>
struct ByChannel {
    static int get(void *function, const Key &key, void *out) {
        return as<int(int, X *)>(function)(key.channel, static_cast<X *>(out));
    }
    static int set(void *function, const Key &key, const void *in) {
        return as<int(int, const X *)>(function)(key.channel, static_cast<const X *>(in));
    }
};

template <class X>
struct WithoutKey {
    static int get(void *function, const Key &, void *out) {
        return as<int(X *)>(function)(static_cast<X *>(out));
    }
    static int set(void *function, const Key &, const void *in) {
        return as<int(const X *)>(function)(static_cast<const X *>(in));
    }
};

struct RecordCalls {
    std::string_view record;
    int (*get)(void *function, const Key &key, void *out);
    int (*set)(void *function, const Key &key, const void *in);
};

#define RECORD_CALLS(Form, X) \
    { #X, Form < X> ::get, Form < X> ::set }

constexpr RecordCalls kRecordCalls[] = {
    RECORD_CALLS(ByInterface, VideoOutputInterfaceParameter),
    RECORD_CALLS(ByInterface, VideoOutputScreenSplitParameter),
    RECORD_CALLS(ByInterface, WatermarkOSDParameter),
    RECORD_CALLS(ByInterface, WatermarkPictureParameter),
    RECORD_CALLS(ByInterface, WatermarkDotmatrixParameter),
    RECORD_CALLS(ByChannel, VideoOutputOSDParameter),
    RECORD_CALLS(WithoutKey, VideoOutputDisplayParameter),
    RECORD_CALLS(WithoutKey, VideoOutSourceChange),
    RECORD_CALLS(WithoutKey, AudioOutSourceChange),
    RECORD_CALLS(WithoutKey, StreamingInputStatusChange),
};

constexpr size_t kRecordCallCount = sizeof(kRecordCalls) / sizeof(kRecordCalls[0]);

constexpr size_t calls_index(std::string_view record) {
    size_t i = 0;
    while (i < kRecordCallCount && kRecordCalls[i].record != record)
        ++i;
    return i;
}

const RecordCalls &calls(const Command &command) {
    return kRecordCalls[calls_index(command.record)];
}

constexpr bool every_record_can_be_called() {
    for (const Command &command : kCommands) {
        if (command.record[0] != '\0' && calls_index(command.record) == kRecordCallCount)
            return false;
    }
    return true;
}
static_assert(every_record_can_be_called(), "a command's record is missing in kRecordCalls");

}  // namespace

bool is_served(const Command &command) {
    switch (command.direction) {
        case Direction::kKeepalive:
        case Direction::kDiscover:
            return true;
        case Direction::kGet:
            return handler(command) != nullptr &&
                   (command.companion[0] == '\0' || sizer(command) != nullptr);
        case Direction::kSet:
            return handler(command) != nullptr && is_served(*find_command(command.companion));
        case Direction::kEvent:
        case Direction::kUpload:
            break;
    }
    return handler(command) != nullptr;
}

int call_size(const Command &get, const Key &key) {
    if (get.companion[0] == '\0') return 1;
    void *function = sizer(get);
    return get.key == KeyKind::kChannel ? as<int(int)>(function)(key.channel)
                                        : as<int(const char *)>(function)(key.if_name);
}

int call_get(const Command &get, const Key &key, void *records) {
    return calls(get).get(handler(get), key, records);
}

int call_set(const Command &set, const Key &key, const void *records) {
    return calls(set).set(handler(set), key, records);
}

int call_upload(const Command &upload, const Key &key) {
    return as<int(const char *)>(handler(upload))(key.if_name);
}

}  // namespace command_protocol
