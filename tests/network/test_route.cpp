#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "platform/network/netstatus.h"
#include "platform/network/route.h"

namespace {

/// An answer of the kernel's: a route with a priority, then the interface.
std::vector<std::byte> answer(int interface, unsigned char type = RTN_UNICAST, unsigned short message = RTM_NEWROUTE) {
  struct {
    nlmsghdr header{};
    rtmsg route{};
    rtattr priority_head{.rta_len = RTA_LENGTH(sizeof(int)), .rta_type = RTA_PRIORITY};
    int priority = 3;
    rtattr interface_head{.rta_len = RTA_LENGTH(sizeof(int)), .rta_type = RTA_OIF};
    int interface = 0;
  } bytes;
  bytes.header.nlmsg_len = sizeof bytes;
  bytes.header.nlmsg_type = message;
  bytes.route.rtm_type = type;
  bytes.interface = interface;
  std::vector<std::byte> result(sizeof bytes);
  std::memcpy(result.data(), &bytes, sizeof bytes);
  return result;
}

TEST(Route, TheInterfaceOfAnAnswer) {
  EXPECT_EQ(route_interface(answer(7)), 7);
  EXPECT_EQ(route_interface(answer(7, RTN_UNREACHABLE)), 0);
  EXPECT_EQ(route_interface(answer(7, RTN_BLACKHOLE)), 0);
  EXPECT_EQ(route_interface(answer(7, RTN_UNICAST, NLMSG_ERROR)), 0);
}

TEST(Route, DamagedAnswersNameNothing) {
  const std::vector<std::byte> whole = answer(7);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(route_interface(std::span(whole).first(size)), 0) << size;
    // The kernel never says less than it sends; then nothing beyond what it says is read.
    std::vector<std::byte> shorter = whole;
    const auto length = static_cast<__u32>(size);
    std::memcpy(shorter.data(), &length, sizeof length);
    EXPECT_EQ(route_interface(shorter), 0) << size;
  }
  std::vector<std::byte> endless = whole;
  const unsigned short none = 0;
  std::memcpy(endless.data() + NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(rtmsg)), &none, sizeof none);
  EXPECT_EQ(route_interface(endless), 0);
}

/// Brings the loopback up and makes it the default route of a network that has nothing else.
bool route_to_loopback() {
  const int handle = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq flags{};
  std::strcpy(flags.ifr_name, "lo");
  flags.ifr_flags = IFF_UP | IFF_RUNNING | IFF_LOOPBACK;
  char device[] = "lo";
  rtentry route{};
  route.rt_dst.sa_family = AF_INET;
  route.rt_genmask.sa_family = AF_INET;
  route.rt_flags = RTF_UP;
  route.rt_dev = device;
  const bool done = ioctl(handle, SIOCSIFFLAGS, &flags) == 0 && ioctl(handle, SIOCADDRT, &route) == 0;
  close(handle);
  return done;
}

constexpr int cannot = 77;

/// Each failed expectation has its own status.
int check_network_of_its_own() {
  if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return cannot;
  std::string name = "before";
  netstatus_info_t* info = nullptr;
  netstatus_interface_details_t* details = nullptr;
  if (default_interface(&name) != 0 || !name.empty()) return 1;
  if (netstatus_get_interface_details(nullptr, &details) != ENODEV) return 2;
  if (netstatus_get_info(&info) != 0 || netstatus_info_get_default_interface(info) != nullptr) return 3;
  netstatus_free_info(&info);
  if (!route_to_loopback()) return cannot;
  if (default_interface(&name) != 0 || name != "lo") return 4;
  if (netstatus_get_info(&info) != 0 || std::strcmp(netstatus_info_get_default_interface(info), "lo") != 0) return 5;
  netstatus_free_info(&info);
  if (netstatus_get_interface_details(nullptr, &details) != 0) return 6;
  netstatus_free_interface_details(&details);
  return 0;
}

TEST(Route, ADefaultRouteComesIntoBeing) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(check_network_of_its_own());
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == cannot) GTEST_SKIP() << "no network namespaces here";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
