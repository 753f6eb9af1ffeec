// Addresses, masks, name server files and routing tables of any content. An input is an address, a
// mask, an interface name and a MAC address, each up to a NUL, the size of the outputs, then the
// text of the file or of the table.

#include <memory>
#include <vector>

#include "network_comm.h"
#include "scratch_folder.h"

namespace {

std::string g_routes;  ///< what `ip route` prints

}  // namespace

// The linker's --wrap hands the module's popen and pclose over to these.
extern "C" FILE *__wrap_popen(const char *, const char *) {
    // fmemopen() takes no empty text on every library.
    return g_routes.empty() ? std::fopen("/dev/null", "r")
                            : fmemopen(g_routes.data(), g_routes.size(), "r");
}

extern "C" int __wrap_pclose(FILE *file) {
    return std::fclose(file);
}

namespace {

/** A place of exactly that size on the heap, so that a write past it is seen. */
struct Output {
    explicit Output(size_t bytes) : size(bytes), text(new char[bytes]()) {}
    bool ends() const { return size == 0 || strnlen(text.get(), size) < size; }

    size_t size;
    std::unique_ptr<char[]> text;
};

void check_addresses(const std::string &ip, const std::string &mask) {
    const bool valid = check_ipv4_addr_valid(ip.c_str()) == 1;
    fuzz::require(!valid || (ip.size() >= 7 && ip.size() <= 15),
                  "an address has 7 to 15 characters");
    fuzz::require(
        check_ipv4_subnet_mask_valid(mask.c_str()) == 0 || check_ipv4_addr_valid(mask.c_str()) == 1,
        "a mask is written as an address");
    Output range(19);
    fuzz::require(
        get_subnet_ipv4_range(range.text.get(), ip.c_str(), mask.c_str()) != 0 || range.ends(),
        "a range ends within its place");
    Output gateway(16);
    fuzz::require(modify_gateway_ipv4addr(gateway.text.get(), ip.c_str(), mask.c_str()) != 0 ||
                      gateway.ends(),
                  "a gateway ends within its place");
}

/** Fields may be full to their last byte. */
void check_hosts(const std::string &ip, const std::string &mask) {
    HostLanPara first{};
    std::memcpy(first.ipaddr, ip.data(), std::min(ip.size(), sizeof first.ipaddr));
    std::memcpy(first.netmask, mask.data(), std::min(mask.size(), sizeof first.netmask));
    HostLanPara second = first;
    second.ipaddr[sizeof second.ipaddr - 1] ^= 1;
    fuzz::require(check_ipv4addr_same_segment(&first, &second) ==
                      check_ipv4addr_same_segment(&second, &first),
                  "a segment does not depend on the order");
}

void read_servers(const std::string &text, size_t size) {
    static const fuzz::ScratchFolder folder;
    const std::string path = folder.write("resolv.conf", text);
    Output first(size);
    Output second(size);
    fuzz::require(get_dns1_and_dns2_fromfile(first.text.get(), size, second.text.get(), size,
                                             path.c_str()) == 0,
                  "a file of name servers is read");
    fuzz::require(first.ends() && second.ends(), "a name server ends within its place");
}

void read_gateway(const std::string &interface, const std::string &table, size_t size) {
    g_routes = table;
    Output gateway(size);
    const int result = get_host_gateway(interface.c_str(), gateway.text.get(), size);
    fuzz::require((result == 0 || result == -1) && gateway.ends(),
                  "a gateway is found or not, and ends within its place");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string end(1, '\0');
    fuzz::Input input(data, size);
    const std::string ip = input.until(end);
    const std::string mask = input.until(end);
    const std::string interface = input.until(end);
    const std::string mac = input.until(end);
    check_addresses(ip, mask);
    check_hosts(ip, mask);
    fuzz::require(check_mac_addr_is_valid(mac.c_str()) == 0 || mac.size() == 17,
                  "a MAC address has 17 characters");
    const size_t room = input.byte();
    const std::string text = input.rest();
    read_servers(text, room);
    read_gateway(interface, text, room);
    return 0;
}
