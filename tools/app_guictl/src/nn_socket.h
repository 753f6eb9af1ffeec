/** @file nn_socket.h A nanomsg socket that closes itself. Failures are CtlErrors. */
#ifndef APP_GUICTL_NN_SOCKET_H
#define APP_GUICTL_NN_SOCKET_H

#include <string>
#include <string_view>

namespace app_guictl {

class NnSocket {
public:
    explicit NnSocket(int protocol);
    ~NnSocket();
    NnSocket(const NnSocket &) = delete;
    NnSocket &operator=(const NnSocket &) = delete;

    void connect(const std::string &address);
    void bind(const std::string &address);
    void set_option(int option, int value);
    /** Peers connected now. */
    unsigned connections() const;
    /** @return false when the time is over. */
    bool send(std::string_view message);
    /** @return false when the time is over. */
    bool receive(std::string *message);

private:
    int m_socket;
};

}  // namespace app_guictl

#endif
