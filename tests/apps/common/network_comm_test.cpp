#include "network_comm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

// ---- a kernel that refuses ----------------------------------------------------------------------

namespace {

/** What the kernel shall refuse, with EIO; 0 for nothing. */
unsigned long refused_request = 0;
/** Bits that are added to the MTU that the kernel tells. */
int more_mtu = 0;

}  // namespace

/** Stands in for the C library's within this program. */
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == refused_request) {
        errno = EIO;
        return -1;
    }
    const long result = syscall(SYS_ioctl, fd, request, argument);
    if (result == 0 && request == SIOCGIFMTU) static_cast<ifreq *>(argument)->ifr_mtu |= more_mtu;
    return static_cast<int>(result);
}

namespace {

using testing::HasSubstr;

// ---- a folder of the test's own

class Folder {
public:
    Folder() {
        std::string name = testing::TempDir() + "network_commXXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        path_ = name;
    }
    ~Folder() {
        for (const std::string &file : files_) {
            unlink(file.c_str());
        }
        rmdir(path_.c_str());
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const std::string &path() const { return path_; }

    std::string write(const std::string &name, const std::string &content, mode_t mode = 0644) {
        const std::string file = path_ + "/" + name;
        std::ofstream(file, std::ios::binary) << content;
        chmod(file.c_str(), mode);
        files_.push_back(file);
        return file;
    }

private:
    std::string path_;
    std::vector<std::string> files_;
};

// ---- the LAN record

/** The number that the next opened descriptor will get. */
int next_descriptor() {
    const int next = dup(STDERR_FILENO);
    close(next);
    return next;
}

HostLanPara filled(unsigned char byte) {
    HostLanPara host;
    std::memset(&host, byte, sizeof(host));
    return host;
}

TEST(HostLan, TheLoopbackIsReadIntoItsFourFields) {
    HostLanPara host = filled(0);
    ASSERT_EQ(get_host_lan_para("lo", &host), 0);
    EXPECT_STREQ(host.ipaddr, "127.0.0.1");
    EXPECT_STREQ(host.netmask, "255.0.0.0");
    EXPECT_STREQ(host.macaddr, "00:00:00:00:00:00");
    int mtu = 0;
    ASSERT_TRUE(std::ifstream("/sys/class/net/lo/mtu") >> mtu);
    EXPECT_EQ(host.mtu, mtu & 0xffff);
}

TEST(HostLan, NothingBesideTheFourFieldsIsTouched) {
    HostLanPara host = filled(0x5a);
    ASSERT_EQ(get_host_lan_para("lo", &host), 0);
    const HostLanPara before = filled(0x5a);
    EXPECT_EQ(std::memcmp(host.reserved_0, before.reserved_0, sizeof(host.reserved_0)), 0);
    EXPECT_EQ(std::memcmp(host.reserved_84, before.reserved_84, sizeof(host.reserved_84)), 0);
    EXPECT_EQ(std::memcmp(host.reserved_116, before.reserved_116, sizeof(host.reserved_116)), 0);
}

TEST(HostLan, EveryInterfaceOfTheHostHasItsKernelMac) {
    ifaddrs *list = nullptr;
    ASSERT_EQ(getifaddrs(&list), 0);
    for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
        std::string mac;
        const bool ipv4 = entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET;
        if (!ipv4 ||
            !(std::ifstream("/sys/class/net/" + std::string(entry->ifa_name) + "/address") >>
              mac)) {
            continue;
        }
        HostLanPara host = filled(0);
        EXPECT_EQ(get_host_lan_para(entry->ifa_name, &host), 0);
        EXPECT_EQ(host.macaddr, mac) << entry->ifa_name;
        EXPECT_EQ(check_ipv4_addr_valid(host.ipaddr), 1) << entry->ifa_name;
        EXPECT_EQ(check_ipv4_subnet_mask_valid(host.netmask), 1) << entry->ifa_name;
    }
    freeifaddrs(list);
}

TEST(HostLan, AnUnknownInterfaceLeavesTheRecordUnchanged) {
    const HostLanPara before = filled(0x5a);
    for (const char *name : {"", "l", "lo0nosuch", "LO", "lo ", "no_such_if",
                             "a_name_longer_than_an_interface_may_have"}) {
        HostLanPara host = before;
        EXPECT_EQ(get_host_lan_para(name, &host), 0) << name;
        EXPECT_EQ(std::memcmp(&host, &before, sizeof(host)), 0) << name;
    }
}

TEST(HostLan, NullPointersAreBadArguments) {
    HostLanPara host = filled(0);
    EXPECT_EQ(get_host_lan_para(nullptr, &host), -2);
    EXPECT_EQ(get_host_lan_para("lo", nullptr), -2);
}

TEST(HostLan, NoDescriptorIsLeftOpen) {
    const int before = next_descriptor();
    HostLanPara host = filled(0);
    for (int i = 0; i < 50; ++i) {
        get_host_lan_para("lo", &host);
        get_host_lan_para("no_such_if", &host);
    }
    EXPECT_EQ(next_descriptor(), before);
}

TEST(HostLan, WithoutASocketTheResultIsMinusEightAndAnErrorLine) {
    rlimit saved = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
    HostLanPara host = filled(0x5a);
    const HostLanPara before = host;
    testing::internal::CaptureStderr();
    const rlimit none = {static_cast<rlim_t>(next_descriptor()), saved.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int result = get_host_lan_para("lo", &host);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &saved), 0);
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(result, -8);
    EXPECT_EQ(std::memcmp(&host, &before, sizeof(host)), 0);
    EXPECT_THAT(output, HasSubstr(", get_host_lan_para>: socket failed! errno : " +
                                  std::to_string(EMFILE) + "\n\033[0m"));
}

TEST(HostLan, WithoutAListOfInterfacesTheResultIsMinusEightAndAnErrorLine) {
    HostLanPara host = filled(0x5a);
    const HostLanPara before = host;
    const int descriptor = next_descriptor();
    testing::internal::CaptureStderr();
    refused_request = SIOCGIFCONF;
    const int result = get_host_lan_para("lo", &host);
    refused_request = 0;
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(result, -8);
    EXPECT_EQ(std::memcmp(&host, &before, sizeof(host)), 0);
    EXPECT_EQ(next_descriptor(), descriptor);
    EXPECT_THAT(output, HasSubstr(", get_host_lan_para>: ioctl SIOCGIFCONF failed! errno : " +
                                  std::to_string(EIO) + "\n\033[0m"));
}

TEST(HostLan, AStepThatFailsLeavesItsFieldAndTheOthersRun) {
    const struct {
        unsigned long request;
        const char *name;
        size_t offset, size;  ///< of the step's field
    } cases[] = {
        {SIOCGIFADDR, "SIOCGIFADDR", 68, 16},
        {SIOCGIFNETMASK, "SIOCGIFNETMASK", 100, 16},
        {SIOCGIFHWADDR, "SIOCGIFHWADDR", 352, 18},
        {SIOCGIFMTU, "SIOCGIFMTU", 370, 2},
    };
    HostLanPara whole = filled(0x5a);
    ASSERT_EQ(get_host_lan_para("lo", &whole), 0);
    for (const auto &c : cases) {
        HostLanPara expected = whole, host = filled(0x5a);
        std::memset(reinterpret_cast<char *>(&expected) + c.offset, 0x5a, c.size);
        testing::internal::CaptureStderr();
        refused_request = c.request;
        const int result = get_host_lan_para("lo", &host);
        refused_request = 0;
        const std::string output = testing::internal::GetCapturedStderr();
        EXPECT_EQ(result, 0) << c.name;
        EXPECT_EQ(std::memcmp(&host, &expected, sizeof(host)), 0) << c.name;
        EXPECT_THAT(output, HasSubstr(", get_host_lan_para>: ioctl " + std::string(c.name) +
                                      " failed! errno : " + std::to_string(EIO) + "\n\033[0m"));
    }
}

TEST(HostLan, TheMtuIsTheLow16Bits) {
    HostLanPara host = filled(0), large = filled(0);
    ASSERT_EQ(get_host_lan_para("lo", &host), 0);
    more_mtu = 0x70000;
    EXPECT_EQ(get_host_lan_para("lo", &large), 0);
    more_mtu = 0;
    EXPECT_EQ(large.mtu, host.mtu);
}

// ---- gateway

/** Puts an `ip` of its own first in PATH, which prints the given routes. */
class Gateway : public testing::Test {
protected:
    void SetUp() override {
        const char *const path = std::getenv("PATH");
        saved_ = path != nullptr ? path : "";
        setenv("PATH", (folder_.path() + ":" + saved_).c_str(), 1);
    }
    void TearDown() override { setenv("PATH", saved_.c_str(), 1); }

    void routes(const std::string &text) {
        const std::string list = folder_.write("routes", text);
        folder_.write("ip",
                      "#!/bin/sh\n[ \"$*\" = \"route list table main\" ] && exec cat '" + list +
                          "'\nexit 1\n",
                      0755);
    }

    std::string gateway_of(const char *ifname) {
        char gw[64] = "untouched";
        const int result = get_host_gateway(ifname, gw, sizeof(gw));
        return std::to_string(result) + " " + gw;
    }

private:
    Folder folder_;
    std::string saved_;
};

TEST_F(Gateway, TheFirstRouteOfTheInterfaceThatHasAGatewayCounts) {
    routes(
        "192.168.1.0/24 dev eth0 proto kernel scope link src 192.168.1.77\n"
        "default via 192.168.1.1 dev eth0 proto static metric 100\n"
        "default via 192.168.1.2 dev eth0 metric 200\n"
        "  \t10.0.0.0/8 via 10.9.9.9 dev eth1\n");
    EXPECT_EQ(gateway_of("eth0"), "0 192.168.1.1");
    EXPECT_EQ(gateway_of("eth1"), "0 10.9.9.9");
}

TEST_F(Gateway, AnInterfaceWithoutARouteIsNotFound) {
    routes("default via 192.168.1.1 dev eth0\n172.16.0.0/12 dev eth2 scope link\n");
    for (const char *name : {"eth2", "eth", "eth00", "ETH0", "", "via", "192.168.1.1"}) {
        EXPECT_EQ(gateway_of(name), "-1 untouched") << name;
    }
}

TEST_F(Gateway, LinesOfAnotherFormAreIgnored) {
    routes(
        "\n\n   \nvia\nvia via via\ndefault via\ndefault via 1.2.3.4\ndefault via 1.2.3.4 dev\n"
        "default dev eth0 via 1.2.3.4\nblackhole 10.0.0.0/8 via 1.1.1.1 dev eth0\n"
        "default via 5.6.7.8 dev eth0");
    EXPECT_EQ(gateway_of("eth0"), "0 5.6.7.8");
}

TEST_F(Gateway, NoOutputMeansNotFound) {
    routes("");
    EXPECT_EQ(gateway_of("eth0"), "-1 untouched");
}

TEST_F(Gateway, WordsLongerThanTheirRoomDoNoHarm) {
    const std::string endless(3000, 'x');
    routes("default via " + endless + " dev " + endless + "\ndefault via 5.6.7.8 dev eth0 " +
           endless + "\n");
    EXPECT_EQ(gateway_of("eth0"), "0 5.6.7.8");
}

TEST_F(Gateway, TheOutputIsBoundedByItsSize) {
    routes("default via 192.168.1.1 dev eth0\n");
    char gw[8];
    std::memset(gw, 0x5a, sizeof(gw));
    EXPECT_EQ(get_host_gateway("eth0", gw, 4), 0);
    EXPECT_STREQ(gw, "192");
    EXPECT_EQ(gw[4], 0x5a);
    std::memset(gw, 0x5a, sizeof(gw));
    EXPECT_EQ(get_host_gateway("eth0", gw, 0), 0);
    EXPECT_EQ(gw[0], 0x5a);
}

TEST_F(Gateway, NullPointersAreBadArguments) {
    routes("default via 192.168.1.1 dev eth0\n");
    char gw[8] = "x";
    EXPECT_EQ(get_host_gateway(nullptr, gw, sizeof(gw)), -2);
    EXPECT_EQ(get_host_gateway("eth0", nullptr, 8), -2);
    EXPECT_STREQ(gw, "x");
}

TEST_F(Gateway, WithoutAPipeTheResultIsMinusSevenAndAnErrorLine) {
    routes("default via 192.168.1.1 dev eth0\n");
    rlimit saved = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
    char gw[8] = "x";
    testing::internal::CaptureStderr();
    const rlimit none = {static_cast<rlim_t>(next_descriptor()), saved.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int result = get_host_gateway("eth0", gw, sizeof(gw));
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &saved), 0);
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(result, -7);
    EXPECT_STREQ(gw, "x");
    EXPECT_THAT(output, HasSubstr(", get_host_gateway>: popen(\"ip route\") failed!\n\033[0m"));
}

// ---- name servers

struct NameServers {
    int result;
    char first[64] = "untouched1";
    char second[64] = "untouched2";
};

NameServers servers_in(const std::string &content) {
    Folder folder;
    const std::string file = folder.write("resolv.conf", content);
    NameServers found;
    found.result = get_dns1_and_dns2_fromfile(found.first, sizeof(found.first), found.second,
                                              sizeof(found.second), file.c_str());
    return found;
}

TEST(NameServerFile, TheFirstTwoServersAreRead) {
    const struct {
        const char *content, *first, *second;
    } cases[] = {
        {"nameserver 1.1.1.1\nnameserver 2.2.2.2\nnameserver 3.3.3.3\n", "1.1.1.1", "2.2.2.2"},
        {"# nameserver 9.9.9.9\nsearch lan\nnameserver 1.1.1.1\n", "1.1.1.1", "untouched2"},
        {"nameserver 1.1.1.1", "1.1.1.1", "untouched2"},
        {"nameserver \t 1.1.1.1 # comment\n", "1.1.1.1", "untouched2"},
        {"nameserver8.8.8.8\n", "8.8.8.8", "untouched2"},
        {" nameserver 1.1.1.1\nNAMESERVER 2.2.2.2\n", "untouched1", "untouched2"},
        {"nameserver\nnameserver   \nnameserver fe80::1%eth0\n", "fe80::1%eth0", "untouched2"},
        {"", "untouched1", "untouched2"},
        {"\n\nnameserve 1.1.1.1\n", "untouched1", "untouched2"},
        {"nameserver 1.1.1.1\nnameserver 1.1.1.1\n", "1.1.1.1", "1.1.1.1"},
    };
    for (const auto &c : cases) {
        const NameServers found = servers_in(c.content);
        EXPECT_EQ(found.result, 0) << c.content;
        EXPECT_STREQ(found.first, c.first) << c.content;
        EXPECT_STREQ(found.second, c.second) << c.content;
    }
}

TEST(NameServerFile, EndlessLinesAndForeignBytesDoNoHarm) {
    const NameServers found =
        servers_in("nameserver " + std::string(5000, '1') + "\n" + std::string(5000, 'x') +
                   "nameserver 7.7.7.7\n" + std::string("\0\xff\n", 3) + "nameserver 2.2.2.2\n");
    EXPECT_EQ(found.result, 0);
    EXPECT_EQ(found.first, std::string(63, '1'));
    EXPECT_STREQ(found.second, "2.2.2.2");
}

TEST(NameServerFile, AMissingFileIsMinusSevenWithoutALine) {
    char first[8] = "a", second[8] = "b";
    testing::internal::CaptureStderr();
    EXPECT_EQ(get_dns1_and_dns2_fromfile(first, 8, second, 8, "/no/such/file"), -7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_STREQ(first, "a");
    EXPECT_STREQ(second, "b");
}

TEST(NameServerFile, NullOutputsAndSizesOfZeroAreSkipped) {
    Folder folder;
    const std::string file =
        folder.write("resolv.conf", "nameserver 1.1.1.1\nnameserver 2.2.2.2\n");
    char second[16] = "b";
    EXPECT_EQ(get_dns1_and_dns2_fromfile(nullptr, 8, second, sizeof(second), file.c_str()), 0);
    EXPECT_STREQ(second, "2.2.2.2");
    char first[16] = "a";
    EXPECT_EQ(get_dns1_and_dns2_fromfile(first, 0, nullptr, 0, file.c_str()), 0);
    EXPECT_STREQ(first, "a");
    EXPECT_EQ(get_dns1_and_dns2_fromfile(first, 8, second, 8, nullptr), -2);
}

TEST(NameServerFile, TheHostsFileIsTheDefault) {
    char host[2][64] = {"", ""}, file[2][64] = {"", ""};
    const int expected = get_dns1_and_dns2_fromfile(file[0], 64, file[1], 64, "/etc/resolv.conf");
    EXPECT_EQ(get_dns1_and_dns2(host[0], 64, host[1], 64), expected);
    EXPECT_STREQ(host[0], file[0]);
    EXPECT_STREQ(host[1], file[1]);
    EXPECT_EQ(get_dns1_and_dns2(nullptr, 0, nullptr, 0), expected);
}

// ---- addresses and masks

TEST(Ipv4Address, FourNumbersWithAnySeparatorAreValid) {
    const struct {
        const char *text;
        int valid;
    } cases[] = {
        {"192.168.1.1", 1},  {"0.0.0.0", 1},    {"255.255.255.255", 1},
        {"192x168x1x1", 1},  {"1234567", 1},    {"1 2 3 4", 1},
        {"249.199.99.9", 1}, {"1\n2\n3\n4", 1}, {"256.1.1.1", 0},
        {"1.256.1.1", 0},    {"1.1.1.256", 0},  {"1.1.1.300", 0},
        {"1.1.1", 0},        {"1.1.1.1.1", 0},  {"", 0},
        {"01.1.1.1", 0},     {" 1.1.1.1", 0},   {"1.1.1.1 ", 0},
        {"1.1.1.1\n", 0},    {"1..1.1", 0},     {"-1.1.1.1", 0},
        {"a.b.c.d", 0},      {"1.1.1.", 0},     {"12", 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(check_ipv4_addr_valid(c.text), c.valid) << c.text;
    }
    EXPECT_EQ(check_ipv4_addr_valid(nullptr), 0);
    EXPECT_EQ(check_ipv4_addr_valid(std::string(100000, '1').c_str()), 0);
}

TEST(Ipv4Address, EveryOctetFrom0To255IsValidAndNoOther) {
    for (int octet = 0; octet < 1200; ++octet) {
        const std::string text = "1.2." + std::to_string(octet) + ".4";
        EXPECT_EQ(check_ipv4_addr_valid(text.c_str()), octet <= 255) << text;
    }
}

TEST(Ipv4Address, ManyThreadsMayAskAtOnce) {
    std::vector<std::thread> threads;
    std::vector<int> good(4);
    for (int &count : good) {
        threads.emplace_back([&count] {
            for (int i = 0; i < 500; ++i) {
                count += check_ipv4_addr_valid("10.0.0.1") - check_ipv4_addr_valid("10.0.0.256");
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_THAT(good, testing::Each(500));
}

TEST(Ipv4Mask, ExactlyTheThirtyThreePrefixesAreValid) {
    for (int prefix = 0; prefix <= 32; ++prefix) {
        const uint64_t bits = 0xffffffff00000000ULL >> prefix & 0xffffffff;
        const auto octet = [bits](int shift) { return std::to_string(bits >> shift & 255); };
        const std::string text = octet(24) + "." + octet(16) + "." + octet(8) + "." + octet(0);
        EXPECT_EQ(check_ipv4_subnet_mask_valid(text.c_str()), 1) << text;
    }
    for (const char *text : {"255.0.255.0", "0.255.0.0", "255.255.255.1", "255.255.254.128",
                             "127.0.0.0", "0.0.0.1", "255.255.253.0", "255x255x255x0", "256.0.0.0",
                             "255.255.255", "", "255.255.255.0 ", "1234567"}) {
        EXPECT_EQ(check_ipv4_subnet_mask_valid(text), 0) << text;
    }
    EXPECT_EQ(check_ipv4_subnet_mask_valid(nullptr), 0);
}

TEST(Ipv4Mask, RandomMasksAreJudgedBitByBit) {
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        unsigned octets[4];
        for (unsigned &octet : octets) {
            const unsigned usual[] = {0, 255, 128, 240, 254, 255};
            octet = random() % 4 != 0 ? usual[random() % 6] : random() % 256;
        }
        bool zeroSeen = false, valid = true;
        for (int bit = 0; bit < 32; ++bit) {
            const bool one = (octets[bit / 8] >> (7 - bit % 8) & 1) != 0;
            valid = valid && !(one && zeroSeen);
            zeroSeen = zeroSeen || !one;
        }
        char text[32];
        std::snprintf(text, sizeof(text), "%u.%u.%u.%u", octets[0], octets[1], octets[2],
                      octets[3]);
        EXPECT_EQ(check_ipv4_subnet_mask_valid(text), valid) << text;
    }
}

TEST(SubnetRange, ItIsTheNetworkAndTheLeadingOnesOfEachMaskOctet) {
    const struct {
        const char *ip, *mask, *range;
    } cases[] = {
        {"192.168.1.77", "255.255.255.0", "192.168.1.0/24"},
        {"192.168.1.77", "255.0.255.0", "192.0.1.0/16"},
        {"255.255.255.255", "255.255.255.255", "255.255.255.255/32"},
        {"10.1.2.3", "0.0.0.0", "0.0.0.0/0"},
        {"10.1.2.3", "255.255.254.0", "10.1.2.0/23"},
        // 191 is 10111111: one leading one.
        {"255.255.255.255", "191.127.128.1", "191.127.128.1/2"},
        {" 10. 1. 2. 3", "255.0.0.0 and more", "10.0.0.0/8"},
        {"300.1.1.1", "255.255.255.255", "44.1.1.1/32"},
    };
    for (const auto &c : cases) {
        char out[32] = "";
        EXPECT_EQ(get_subnet_ipv4_range(out, c.ip, c.mask), 0) << c.ip;
        EXPECT_STREQ(out, c.range);
    }
}

TEST(SubnetRange, FewerThanFourNumbersAreABadArgument) {
    for (const char *bad : {"", "1.2.3", "1.2.3.", "a.b.c.d", "1.2.x.4", "1 .2.3.4", "1,2,3,4"}) {
        char out[32] = "untouched";
        EXPECT_EQ(get_subnet_ipv4_range(out, bad, "255.0.0.0"), -2) << bad;
        EXPECT_EQ(get_subnet_ipv4_range(out, "1.2.3.4", bad), -2) << bad;
        EXPECT_EQ(modify_gateway_ipv4addr(out, bad, "255.0.0.0"), -2) << bad;
        EXPECT_EQ(modify_gateway_ipv4addr(out, "1.2.3.4", bad), -2) << bad;
        EXPECT_STREQ(out, "untouched");
    }
    char out[32];
    EXPECT_EQ(get_subnet_ipv4_range(nullptr, "1.2.3.4", "255.0.0.0"), -2);
    EXPECT_EQ(get_subnet_ipv4_range(out, nullptr, "255.0.0.0"), -2);
    EXPECT_EQ(get_subnet_ipv4_range(out, "1.2.3.4", nullptr), -2);
}

TEST(SubnetRange, NumbersOfAnySizeStayWithinTheOutput) {
    const std::string huge(400, '9');
    for (const std::string &octet : {huge, "-" + huge, std::string("2147483647"),
                                     std::string("-2147483648"), std::string("4294967296")}) {
        const std::string text = octet + "." + octet + "." + octet + "." + octet;
        // On the heap and of the promised sizes, so that a sanitizer sees a byte too many.
        std::vector<char> range(19, 'x'), gateway(16, 'x');
        EXPECT_EQ(get_subnet_ipv4_range(range.data(), text.c_str(), text.c_str()), 0);
        EXPECT_LT(strnlen(range.data(), range.size()), range.size());
        EXPECT_EQ(modify_gateway_ipv4addr(gateway.data(), text.c_str(), text.c_str()), 0);
        EXPECT_LT(strnlen(gateway.data(), gateway.size()), gateway.size());
    }
}

HostLanPara host_with(const char *ip, const char *mask) {
    HostLanPara host = filled(0);
    std::snprintf(host.ipaddr, sizeof(host.ipaddr), "%s", ip);
    std::snprintf(host.netmask, sizeof(host.netmask), "%s", mask);
    return host;
}

TEST(SameSegment, RecordsOfOneNetworkAndPrefixAreInOne) {
    const struct {
        const char *ip1, *mask1, *ip2, *mask2;
        int same;
    } cases[] = {
        {"192.168.1.1", "255.255.255.0", "192.168.1.254", "255.255.255.0", 1},
        {"192.168.1.1", "255.255.255.0", "192.168.2.1", "255.255.255.0", 0},
        {"10.0.0.1", "255.0.0.0", "10.0.0.1", "255.255.0.0", 0},
        // 192.0.1.0/16 both: masks of the same network text count as the same.
        {"192.0.1.5", "255.0.255.0", "192.0.1.9", "255.0.255.0", 1},
        {"", "", "", "", 0},
        {"192.168.1.1", "255.255.255.0", "", "", 0},
        {"192.168.1.1", "", "192.168.1.1", "", 0},
    };
    for (const auto &c : cases) {
        const HostLanPara a = host_with(c.ip1, c.mask1), b = host_with(c.ip2, c.mask2);
        EXPECT_EQ(check_ipv4addr_same_segment(&a, &b), c.same) << c.ip1 << " " << c.ip2;
        EXPECT_EQ(check_ipv4addr_same_segment(&b, &a), c.same) << c.ip1 << " " << c.ip2;
    }
}

TEST(SameSegment, NullAndUnterminatedRecordsAreInNone) {
    const HostLanPara good = host_with("192.168.1.1", "255.255.255.0");
    const HostLanPara full = filled('x');
    EXPECT_EQ(check_ipv4addr_same_segment(nullptr, &good), 0);
    EXPECT_EQ(check_ipv4addr_same_segment(&good, nullptr), 0);
    EXPECT_EQ(check_ipv4addr_same_segment(&full, &full), 0);
    HostLanPara unterminated = good;
    std::memcpy(unterminated.ipaddr, "192.168.001.0013", 16);
    EXPECT_EQ(check_ipv4addr_same_segment(&unterminated, &good), 1);
}

TEST(DefaultGateway, TheFourthNumberIsAlwaysOne) {
    const struct {
        const char *ip, *mask, *gateway;
    } cases[] = {
        {"10.1.2.3", "255.0.0.0", "10.0.0.1"},
        {"192.168.1.77", "255.255.255.0", "192.168.1.1"},
        {"192.168.1.200", "255.255.255.128", "192.168.1.1"},
        {"255.255.255.255", "255.255.255.255", "255.255.255.1"},
        {"1.2.3.4", "0.0.0.0", "0.0.0.1"},
    };
    for (const auto &c : cases) {
        char out[16] = "";
        EXPECT_EQ(modify_gateway_ipv4addr(out, c.ip, c.mask), 0);
        EXPECT_STREQ(out, c.gateway);
    }
    char out[16];
    EXPECT_EQ(modify_gateway_ipv4addr(nullptr, "1.2.3.4", "255.0.0.0"), -2);
    EXPECT_EQ(modify_gateway_ipv4addr(out, nullptr, "255.0.0.0"), -2);
    EXPECT_EQ(modify_gateway_ipv4addr(out, "1.2.3.4", nullptr), -2);
}

// ---- MAC and MTU

TEST(MacAddress, SixPairsOfHexadecimalDigitsAreValid) {
    const struct {
        const char *text;
        int valid;
    } cases[] = {
        {"00:11:22:33:44:55", 1}, {"aA:bB:cC:dD:eE:fF", 1},  {"", 0},
        {"00:11:22:33:44:5", 0},  {"00:11:22:33:44:555", 0}, {"00-11-22-33-44-55", 0},
        {"00:11:22:33:44:5g", 0}, {"0:011:22:33:44:55", 0},  {":::::::::::::::::", 0},
        {"00112233445566778", 0}, {" 0:11:22:33:44:55", 0},  {"00:11:22:33:44:55\n", 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(check_mac_addr_is_valid(c.text), c.valid) << c.text;
    }
    EXPECT_EQ(check_mac_addr_is_valid(nullptr), 0);
}

TEST(MacAddress, RandomAddressesAreValidUntilOneByteIsReplaced) {
    const std::string digits = "0123456789abcdefABCDEF";
    std::mt19937 random(11);
    for (int i = 0; i < 500; ++i) {
        std::string text;
        for (int at = 0; at < 17; ++at) {
            text += at % 3 == 2 ? ':' : digits[random() % digits.size()];
        }
        ASSERT_EQ(check_mac_addr_is_valid(text.c_str()), 1) << text;
        const size_t at = random() % text.size();
        const char byte = static_cast<char>(random() % 256);
        std::string broken = text;
        broken[at] = byte;
        const bool fits = at % 3 == 2 ? byte == ':' : digits.find(byte) != std::string::npos;
        ASSERT_EQ(check_mac_addr_is_valid(broken.c_str()), fits) << broken;
    }
}

TEST(Mtu, ItIsValidFrom68To1500Modulo65536) {
    for (unsigned mtu = 0; mtu < 3 * 65536; ++mtu) {
        const unsigned low = mtu % 65536;
        ASSERT_EQ(check_mtu_is_valid(mtu), low >= 68 && low <= 1500) << mtu;
    }
    EXPECT_EQ(check_mtu_is_valid(UINT_MAX), 0);
    EXPECT_EQ(check_mtu_is_valid(0xffff0000U + 68), 1);
}

}  // namespace
