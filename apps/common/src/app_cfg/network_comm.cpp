#include "network_comm.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <regex.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "diagnostics.h"

namespace {

constexpr int kOk = 0;
constexpr int kNotFound = -1;
constexpr int kBadArgument = -2;
constexpr int kCannotOpen = -7;
constexpr int kInterfacesFailed = -8;

// SIOCGIFCONF gives at most so many interfaces: 512 bytes on the board.
constexpr size_t kMaxInterfaces = 16;
// What a word of a line is read into.
constexpr size_t kWordSize = 512;
// "255.255.255.255/32" and "255.255.255.1" with their NUL.
constexpr size_t kRangeSize = 19;
constexpr size_t kAddressSize = 16;

class Socket {
public:
    Socket() : fd_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    int fd() const { return fd_; }

private:
    int fd_;
};

// ---- one interface -----------------------------------------------------------------------------

#define LAN_ERROR(message) \
    ERROR_LINE_AS("get_host_lan_para", message " failed! errno : %d\n", errno)

/** Writes an address as dotted text. */
void write_address(const sockaddr &address, char (&text)[kAddressSize]) {
    sockaddr_in inet = {};
    std::memcpy(&inet, &address, sizeof(inet));
    if (inet_ntop(AF_INET, &inet.sin_addr, text, sizeof(text)) == nullptr) {
        LAN_ERROR("inet_ntop");
    }
}

// Each of these asks for one thing of the interface; on failure its field stays as it was.

void read_address(int fd, ifreq request, HostLanPara *out) {
    if (ioctl(fd, SIOCGIFADDR, &request) < 0) {
        LAN_ERROR("ioctl SIOCGIFADDR");
        return;
    }
    write_address(request.ifr_addr, out->ipaddr);
}

void read_netmask(int fd, ifreq request, HostLanPara *out) {
    if (ioctl(fd, SIOCGIFNETMASK, &request) < 0) {
        LAN_ERROR("ioctl SIOCGIFNETMASK");
        return;
    }
    write_address(request.ifr_netmask, out->netmask);
}

void read_mac(int fd, ifreq request, HostLanPara *out) {
    if (ioctl(fd, SIOCGIFHWADDR, &request) < 0) {
        LAN_ERROR("ioctl SIOCGIFHWADDR");
        return;
    }
    unsigned char mac[6];
    std::memcpy(mac, request.ifr_hwaddr.sa_data, sizeof(mac));
    std::snprintf(out->macaddr, sizeof(out->macaddr), "%02x:%02x:%02x:%02x:%02x:%02x", mac[0],
                  mac[1], mac[2], mac[3], mac[4], mac[5]);
}

void read_mtu(int fd, ifreq request, HostLanPara *out) {
    if (ioctl(fd, SIOCGIFMTU, &request) < 0) {
        LAN_ERROR("ioctl SIOCGIFMTU");
        return;
    }
    out->mtu = static_cast<uint16_t>(request.ifr_mtu);
}

#undef LAN_ERROR

// ---- lines of text -----------------------------------------------------------------------------

/** Calls `take(line)` for each line until it returns false. */
template <typename Take>
void for_each_line(FILE *file, Take take) {
    char *line = nullptr;
    size_t capacity = 0;
    while (getline(&line, &capacity, file) >= 0 && take(line)) {
    }
    std::free(line);
}

void write_text(char *out, size_t size, const char *text) {
    if (out != nullptr) {
        std::snprintf(out, size, "%s", text);
    }
}

// ---- addresses ---------------------------------------------------------------------------------

#define OCTET "([0-9]|[1-9][0-9]|1[0-9]{1,2}|2[0-4][0-9]|25[0-5])"

class Ipv4Pattern {
public:
    // Kept: the dots are not escaped, any single character separates the numbers.
    Ipv4Pattern()
        : compiled_(regcomp(&regex_, "^" OCTET "." OCTET "." OCTET "." OCTET "$",
                            REG_EXTENDED | REG_NOSUB) == 0) {}

    bool matches(const char *text) const {
        return compiled_ && regexec(&regex_, text, 0, nullptr, 0) == 0;
    }

private:
    regex_t regex_ = {};
    bool compiled_;
};

#undef OCTET

struct Octets {
    int at[4];
};

/** Reads "%d.%d.%d.%d"; false for fewer than four numbers. Numbers past `long` stick at its ends.
 */
bool parse_octets(const char *text, Octets *out) {
    if (text == nullptr) {
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        if (i > 0 && *text++ != '.') {
            return false;
        }
        char *end = nullptr;
        out->at[i] = static_cast<int>(std::strtol(text, &end, 10));
        if (end == text) {
            return false;
        }
        text = end;
    }
    return true;
}

int leading_ones(int octet) {
    int ones = 0;
    while (ones < 8 && (octet & (0x80 >> ones)) != 0) {
        ++ones;
    }
    return ones;
}

/** Address and mask, octet by octet. */
struct Subnet {
    Octets network;
    int prefix;
};

bool parse_subnet(const char *ip, const char *mask, Subnet *out) {
    Octets address, bits;
    if (!parse_octets(ip, &address) || !parse_octets(mask, &bits)) {
        return false;
    }
    out->prefix = 0;
    for (int i = 0; i < 4; ++i) {
        out->network.at[i] = address.at[i] & bits.at[i];
        out->prefix += leading_ones(bits.at[i]);
    }
    return true;
}

/** Parses a record's fields, which may be full to the last byte. */
bool parse_subnet(const HostLanPara &host, Subnet *out) {
    const std::string ip(host.ipaddr, strnlen(host.ipaddr, sizeof(host.ipaddr)));
    const std::string mask(host.netmask, strnlen(host.netmask, sizeof(host.netmask)));
    return parse_subnet(ip.c_str(), mask.c_str(), out);
}

}  // namespace

int get_host_lan_para(const char *ifname, HostLanPara *out) {
    if (ifname == nullptr || out == nullptr) {
        return kBadArgument;
    }
    const Socket control;
    if (control.fd() < 0) {
        ERROR_LINE("socket failed! errno : %d\n", errno);
        return kInterfacesFailed;
    }
    ifreq entries[kMaxInterfaces] = {};
    ifconf list = {};
    list.ifc_len = sizeof(entries);
    list.ifc_req = entries;
    if (ioctl(control.fd(), SIOCGIFCONF, &list) < 0) {
        ERROR_LINE("ioctl SIOCGIFCONF failed! errno : %d\n", errno);
        return kInterfacesFailed;
    }
    const size_t count = static_cast<size_t>(list.ifc_len) / sizeof(ifreq);
    for (size_t i = 0; i < count; ++i) {
        if (std::strncmp(entries[i].ifr_name, ifname, IFNAMSIZ) == 0) {
            read_address(control.fd(), entries[i], out);
            read_netmask(control.fd(), entries[i], out);
            read_mac(control.fd(), entries[i], out);
            read_mtu(control.fd(), entries[i], out);
            break;
        }
    }
    return kOk;
}

int get_host_gateway(const char *ifname, char *gw, size_t size) {
    if (ifname == nullptr || gw == nullptr) {
        return kBadArgument;
    }
    FILE *const routes = popen("ip route list table main", "r");
    if (routes == nullptr) {
        ERROR_LINE("popen(\"ip route\") failed!\n");
        return kCannotOpen;
    }
    int status = kNotFound;
    for_each_line(routes, [&](const char *line) {
        line += std::strspn(line, " \t\n\v\f\r");
        char gateway[kWordSize];
        char device[kWordSize];
        if (std::strstr(line, "via") == nullptr ||
            std::sscanf(line, "%*s via %511s dev %511s", gateway, device) != 2 ||
            std::strcmp(device, ifname) != 0) {
            return true;
        }
        write_text(gw, size, gateway);
        status = kOk;
        return false;
    });
    pclose(routes);
    return status;
}

int get_dns1_and_dns2(char *dns1, size_t size1, char *dns2, size_t size2) {
    return get_dns1_and_dns2_fromfile(dns1, size1, dns2, size2, "/etc/resolv.conf");
}

int get_dns1_and_dns2_fromfile(char *dns1, size_t size1, char *dns2, size_t size2,
                               const char *path) {
    if (path == nullptr) {
        return kBadArgument;
    }
    FILE *const file = std::fopen(path, "re");
    if (file == nullptr) {
        return kCannotOpen;
    }
    int found = 0;
    for_each_line(file, [&](const char *line) {
        char address[kWordSize];
        // The blank of the format also matches none: "nameserver8.8.8.8" names a server.
        if (std::strncmp(line, "nameserver", std::strlen("nameserver")) != 0 ||
            std::sscanf(line, "nameserver %511s", address) != 1) {
            return true;
        }
        ++found;
        write_text(found == 1 ? dns1 : dns2, found == 1 ? size1 : size2, address);
        return found < 2;
    });
    std::fclose(file);
    return kOk;
}

int check_ipv4_addr_valid(const char *text) {
    static const Ipv4Pattern pattern;
    return text != nullptr && pattern.matches(text);
}

int check_ipv4_subnet_mask_valid(const char *text) {
    Octets octets;
    if (check_ipv4_addr_valid(text) == 0 || !parse_octets(text, &octets)) {
        return 0;
    }
    uint32_t bits = 0;
    for (const int octet : octets.at) {
        bits = bits << 8 | static_cast<uint32_t>(octet);
    }
    // A run of ones above zeros: the complement is one less than a power of two.
    return (~bits & (~bits + 1)) == 0;
}

int get_subnet_ipv4_range(char *out, const char *ip, const char *mask) {
    Subnet subnet;
    if (out == nullptr || !parse_subnet(ip, mask, &subnet)) {
        return kBadArgument;
    }
    const int *const at = subnet.network.at;
    std::snprintf(out, kRangeSize, "%d.%d.%d.%d/%d", at[0], at[1], at[2], at[3], subnet.prefix);
    return kOk;
}

int check_ipv4addr_same_segment(const HostLanPara *a, const HostLanPara *b) {
    Subnet first, second;
    if (a == nullptr || b == nullptr || !parse_subnet(*a, &first) || !parse_subnet(*b, &second)) {
        return 0;
    }
    return std::memcmp(first.network.at, second.network.at, sizeof(first.network.at)) == 0 &&
           first.prefix == second.prefix;
}

int modify_gateway_ipv4addr(char *out, const char *ip, const char *mask) {
    Subnet subnet;
    if (out == nullptr || !parse_subnet(ip, mask, &subnet)) {
        return kBadArgument;
    }
    const int *const at = subnet.network.at;
    // Kept: the fourth number is 1, whatever the mask.
    std::snprintf(out, kAddressSize, "%d.%d.%d.1", at[0], at[1], at[2]);
    return kOk;
}

int check_mac_addr_is_valid(const char *text) {
    constexpr size_t kLength = 17;
    if (text == nullptr || strnlen(text, kLength + 1) != kLength) {
        return 0;
    }
    for (size_t i = 0; i < kLength; ++i) {
        const bool good =
            i % 3 == 2 ? text[i] == ':' : std::strchr("0123456789abcdefABCDEF", text[i]) != nullptr;
        if (!good) {
            return 0;
        }
    }
    return 1;
}

int check_mtu_is_valid(unsigned mtu) {
    // Kept: judged on the low 16 bits, so 68 to 1500 modulo 65536 pass.
    return static_cast<uint16_t>(mtu - 68) <= 1500 - 68;
}
