/** @file ctl_error.h How the program ends. */
#ifndef APP_GUICTL_CTL_ERROR_H
#define APP_GUICTL_CTL_ERROR_H

#include <stdexcept>
#include <string>

namespace app_guictl {

enum ExitCode {
    kDone = 0,
    kRefused = 1,   ///< the device answered with an error
    kUsage = 2,     ///< the command line (or a file that it names) cannot be used
    kNoAnswer = 3,  ///< nobody answered, or nobody listened, in time
};

/** Ends the program with a message on standard error. */
class CtlError : public std::runtime_error {
public:
    CtlError(ExitCode code, const std::string &message)
        : std::runtime_error(message), m_code(code) {}
    ExitCode code() const { return m_code; }

private:
    ExitCode m_code;
};

}  // namespace app_guictl

#endif
