/**
 * @file network_comm.h
 * The host's IPv4 settings: queries and checks shared by the device's processes.
 *
 * Conventions: C linkage; texts are NUL-terminated. Results: 0 success, -1 not found, -2 bad
 * argument, -7 a file or command could not be opened, -8 socket or interface enumeration failed.
 * `check_` functions return 1 or 0. Null arguments count as bad or as not matching.
 *
 * Thread: any.
 */
#ifndef APPS_COMMON_APP_CFG_NETWORK_COMM_H
#define APPS_COMMON_APP_CFG_NETWORK_COMM_H

#include <cstddef>
#include <cstdint>

#define NETWORK_COMM_API __attribute__((visibility("default")))

/** The host's LAN settings as the device's modules share them; only these fields are used here. */
struct HostLanPara {
    uint8_t reserved_0[68];
    char ipaddr[16];  ///< dotted text
    uint8_t reserved_84[16];
    char netmask[16];  ///< dotted text
    uint8_t reserved_116[236];
    char macaddr[18];  ///< "xx:xx:xx:xx:xx:xx", lower case
    uint16_t mtu;      ///< low 16 bits of the interface's MTU
};
static_assert(offsetof(HostLanPara, ipaddr) == 68 && offsetof(HostLanPara, netmask) == 100 &&
                  offsetof(HostLanPara, macaddr) == 352 && offsetof(HostLanPara, mtu) == 370 &&
                  sizeof(HostLanPara) == 372,
              "HostLanPara is shared with other modules of the device");

extern "C" {

/** Fills address, mask, MAC and MTU of an interface; an unknown one leaves `out` untouched (0). */
NETWORK_COMM_API int get_host_lan_para(const char *ifname, HostLanPara *out);
/** Writes the interface's gateway from the main routing table; -1 when there is none. */
NETWORK_COMM_API int get_host_gateway(const char *ifname, char *gw, size_t size);
/** The first two name servers of /etc/resolv.conf; an output without a line is left untouched. */
NETWORK_COMM_API int get_dns1_and_dns2(char *dns1, size_t size1, char *dns2, size_t size2);
NETWORK_COMM_API int get_dns1_and_dns2_fromfile(char *dns1, size_t size1, char *dns2, size_t size2,
                                                const char *path);
/** Kept: any character separates the numbers, so "192x168x1x1" passes. */
NETWORK_COMM_API int check_ipv4_addr_valid(const char *text);
NETWORK_COMM_API int check_ipv4_subnet_mask_valid(const char *text);
/** Writes "a.b.c.d/n" (at most 19 bytes with NUL) for an address in a mask's network. */
NETWORK_COMM_API int get_subnet_ipv4_range(char *out, const char *ip, const char *mask);
NETWORK_COMM_API int check_ipv4addr_same_segment(const HostLanPara *a, const HostLanPara *b);
/** Writes the network's default gateway, "a.b.c.1", into 16 bytes. */
NETWORK_COMM_API int modify_gateway_ipv4addr(char *out, const char *ip, const char *mask);
NETWORK_COMM_API int check_mac_addr_is_valid(const char *text);
/** 1 for 68 to 1500. Kept: judged modulo 65536. */
NETWORK_COMM_API int check_mtu_is_valid(unsigned mtu);

}  // extern "C"

#endif
