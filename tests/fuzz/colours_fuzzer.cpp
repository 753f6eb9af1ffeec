// Colour texts of any content. An input is two colour texts, each up to a NUL, then the size that a
// name may take and the numbers to name.

#include <memory>

#include "app_gui.h"
#include "fuzz_target.h"
#include "wnd_split.h"

namespace {

bool is_colour(const std::string &text) {
    return text.size() == 7 && text[0] == '#' &&
           text.find_first_not_of("0123456789abcdefABCDEF", 1) == text.npos;
}

void compare(const std::string &a, const std::string &b) {
    fuzz::require(check_color_is_valid(a.c_str()) == is_colour(a),
                  "a colour is # and six hexadecimal digits");
    fuzz::require(check_color_is_same(a.c_str(), a.c_str()) == is_colour(a),
                  "a colour is the same as itself");
    fuzz::require(
        check_color_is_same(a.c_str(), b.c_str()) == check_color_is_same(b.c_str(), a.c_str()),
        "sameness does not depend on the order");
}

void name(fuzz::Input &input, const std::string &text) {
    const size_t size = input.byte();
    const int alpha = input.value<int>();
    const int red = input.value<int>();
    const int green = input.value<int>();
    const int blue = input.value<int>();
    // From the heap at its exact size, so that a write past it is seen.
    const auto place = std::make_unique<char[]>(size);
    char *const with =
        get_color_standard_name(place.get(), size, text.c_str(), &alpha, red, green, blue);
    fuzz::require(with == place.get(), "the name's place is returned");
    get_color_standard_name(place.get(), size, text.c_str(), nullptr, red, green, blue);
    fuzz::require(size == 0 || strnlen(place.get(), size) < size, "a name ends within its place");
    if (size > 7 && is_colour(text)) {
        fuzz::require(check_color_is_same(place.get(), text.c_str()) == 1,
                      "a colour's name is that colour");
    }
}

void read_border(const std::string &text) {
    int red = -1;
    int green = -1;
    int blue = -1;
    fuzz::require(getBorderCorlor(text.c_str(), &red, &green, &blue) == 0,
                  "a border colour is read with the result 0");
    for (const int part : {red, green, blue}) {
        // Kept: a sign counts as a digit's place, so "-f" is -15.
        fuzz::require(part >= -15 && part <= 255, "a component has two characters");
    }
    fuzz::require(!is_colour(text) || blue >= 0, "a valid colour gives all components");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const std::string a = input.until(std::string(1, '\0'));
    const std::string b = input.until(std::string(1, '\0'));
    compare(a, b);
    name(input, a);
    read_border(a);
    return 0;
}
