/**
 * @file output.h
 * What the program prints: tables for people, JSON for programs.
 *
 * Texts of the device are shown without their control characters, so that none of them reaches the
 * terminal as a command.
 */
#ifndef APP_GUICTL_OUTPUT_H
#define APP_GUICTL_OUTPUT_H

#include <cstdio>
#include <string>
#include <vector>

#include "device.h"

namespace app_guictl {

enum class Format { kTable, kJson };

/** Whether to colour what goes to `stream`: a terminal that can, and no NO_COLOR. */
bool wants_colour(FILE *stream);

/** The text with control characters (C0, DEL, C1) written as "\xNN". */
std::string printable(std::string_view text);

class Output {
public:
    Output(Format format, bool colour) : m_format(format), m_colour(colour) {}

    bool is_json() const { return m_format == Format::kJson; }
    void json(const Json &value) const;
    void line(const std::string &text) const;
    /** One block of "field value" lines per record; nothing but records may be in the array. */
    void records(const std::string &name, const Json &records) const;
    /** Rows of equal length; the first one is the head. */
    void table(const std::vector<std::vector<std::string>> &rows) const;

private:
    std::string styled(const char *style, const std::string &text) const;

    Format m_format;
    bool m_colour;
};

}  // namespace app_guictl

#endif
