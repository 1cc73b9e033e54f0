// SPDX-License-Identifier: MIT
// Network namespaces.
#include "tests/support/OwnNetwork.h"

#include <cerrno>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

std::string EnterOwnNetwork()
{
  if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
    return std::string("no network namespace: ") + std::strerror(errno);
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  bool isUp = descriptor >= 0 && ioctl(descriptor, SIOCSIFFLAGS, &request) == 0;
  std::strcpy(request.ifr_name, "lo:1"); // a second address, for a second camera
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
  std::memcpy(&request.ifr_addr, &address, sizeof address);
  isUp = isUp && ioctl(descriptor, SIOCSIFADDR, &request) == 0;
  const int failure = errno;
  close(descriptor);
  return isUp ? "" : std::string("no loopback interface: ") + std::strerror(failure);
}
