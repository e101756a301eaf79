#include <winsock2.h>
#include <ws2tcpip.h>
// iphlpapi.h needs the two above first.
#include <iphlpapi.h>
#include <windows.h>

#include <cstring>
#include <memory>
#include <vector>

#include "localnet/peer_owner.h"

namespace brindle::localnet {
namespace {

using asio::ip::tcp;

// The owning process of the socket whose local end is `peer` and whose
// remote end is `us`; 0 when the table has no such row.
DWORD OwningProcess(const tcp::endpoint& peer, const tcp::endpoint& us) {
  const bool v4 = peer.address().is_v4();
  const ULONG family = v4 ? AF_INET : AF_INET6;
  std::vector<unsigned char> buffer;
  DWORD size = 0;
  DWORD result = ERROR_INSUFFICIENT_BUFFER;
  for (int attempt = 0; attempt < 4 && result == ERROR_INSUFFICIENT_BUFFER; ++attempt) {
    buffer.resize(size ? size : 16 * 1024);
    size = static_cast<DWORD>(buffer.size());
    result = GetExtendedTcpTable(buffer.data(), &size, FALSE, family, TCP_TABLE_OWNER_PID_ALL, 0);
  }
  if (result != NO_ERROR) return 0;
  // The table holds ports in network order in the low 16 bits.
  const DWORD peerPort = htons(peer.port());
  const DWORD ourPort = htons(us.port());
  if (v4) {
    auto* table = reinterpret_cast<MIB_TCPTABLE_OWNER_PID*>(buffer.data());
    const auto peerAddr = peer.address().to_v4().to_bytes();
    const auto ourAddr = us.address().to_v4().to_bytes();
    for (DWORD i = 0; i < table->dwNumEntries; ++i) {
      const MIB_TCPROW_OWNER_PID& row = table->table[i];
      if ((row.dwLocalPort & 0xffff) != peerPort || (row.dwRemotePort & 0xffff) != ourPort)
        continue;
      if (std::memcmp(&row.dwLocalAddr, peerAddr.data(), 4) == 0 &&
          std::memcmp(&row.dwRemoteAddr, ourAddr.data(), 4) == 0)
        return row.dwOwningPid;
    }
    return 0;
  }
  auto* table = reinterpret_cast<MIB_TCP6TABLE_OWNER_PID*>(buffer.data());
  const auto peerAddr = peer.address().to_v6().to_bytes();
  const auto ourAddr = us.address().to_v6().to_bytes();
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    const MIB_TCP6ROW_OWNER_PID& row = table->table[i];
    if ((row.dwLocalPort & 0xffff) != peerPort || (row.dwRemotePort & 0xffff) != ourPort) continue;
    if (std::memcmp(row.ucLocalAddr, peerAddr.data(), 16) == 0 &&
        std::memcmp(row.ucRemoteAddr, ourAddr.data(), 16) == 0)
      return row.dwOwningPid;
  }
  return 0;
}

struct HandleCloser {
  void operator()(HANDLE h) const { CloseHandle(h); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// The user SID of a process's token, or empty when the process cannot be
// opened (another user's process usually cannot).
std::vector<unsigned char> UserOf(HANDLE process) {
  HANDLE raw = nullptr;
  if (!OpenProcessToken(process, TOKEN_QUERY, &raw)) return {};
  Handle token(raw);
  DWORD size = 0;
  GetTokenInformation(raw, TokenUser, nullptr, 0, &size);
  std::vector<unsigned char> info(size);
  if (size == 0 || !GetTokenInformation(raw, TokenUser, info.data(), size, &size)) return {};
  return info;
}

}  // namespace

// Wine's TCP table names no owning process, and building it scans every
// process of the machine (seconds on a busy one): ask Windows itself only.
bool CanTellOwners() {
  static const bool wine =
      GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
  return !wine;
}

PeerOwner OwnerOfPeer(const tcp::socket& socket) {
  if (!CanTellOwners()) return PeerOwner::kUnknown;
  std::error_code ec1, ec2;
  tcp::endpoint us = socket.local_endpoint(ec1);
  tcp::endpoint peer = socket.remote_endpoint(ec2);
  if (ec1 || ec2) return PeerOwner::kUnknown;
  if (!peer.address().is_loopback()) return PeerOwner::kOtherUser;
  const DWORD pid = OwningProcess(peer, us);
  if (pid == 0) return PeerOwner::kUnknown;
  if (pid == GetCurrentProcessId()) return PeerOwner::kOurUser;
  Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
  if (!process) {
    return GetLastError() == ERROR_ACCESS_DENIED ? PeerOwner::kOtherUser : PeerOwner::kUnknown;
  }
  auto theirs = UserOf(process.get());
  auto ours = UserOf(GetCurrentProcess());
  if (theirs.empty() || ours.empty()) return PeerOwner::kUnknown;
  auto* theirSid = reinterpret_cast<TOKEN_USER*>(theirs.data())->User.Sid;
  auto* ourSid = reinterpret_cast<TOKEN_USER*>(ours.data())->User.Sid;
  return EqualSid(theirSid, ourSid) ? PeerOwner::kOurUser : PeerOwner::kOtherUser;
}

}  // namespace brindle::localnet
