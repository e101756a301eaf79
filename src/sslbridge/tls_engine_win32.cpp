// The Windows engine: the system's TLS (SChannel) over memory buffers, the
// certificate checked by the companion itself against the Windows trust
// store, the user's CA files and the server's name. Each route has its own
// credentials handle, so the system's session cache resumes per route.
#define SECURITY_WIN32
// The newer credentials form (SCH_CREDENTIALS), needed for TLS 1.3.
#define SCHANNEL_USE_BLACKLISTS
// The Windows headers depend on their order: sockets, then windows.h, then
// the security headers.
#include <winsock2.h>

#include <ws2tcpip.h>

#include <windows.h>

#include <subauth.h>

#include <schannel.h>

#include <security.h>

#include <sspi.h>

#include <wincrypt.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include "sslbridge/tls_engine.h"

namespace brindle::sslbridge {
namespace {

// The SSL policy's "unknown CA is fine" check flag (defined in wininet.h,
// which the companion has no other use for).
constexpr DWORD kIgnoreUnknownCa = 0x00000100;

std::wstring Wide(const std::string& text) {
  if (text.empty()) return {};
  int n = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), n);
  return out;
}

std::string Hex(unsigned long value) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "0x%08lx", value);
  return buf;
}

bool IsAddressLiteral(const std::string& host) {
  unsigned char buf[16];
  return inet_pton(AF_INET, host.c_str(), buf) == 1 || inet_pton(AF_INET6, host.c_str(), buf) == 1;
}

std::string DescribeStatus(SECURITY_STATUS status) {
  switch (status) {
    case SEC_E_ALGORITHM_MISMATCH:
      return "no TLS version or cipher in common with the server";
    case SEC_E_ILLEGAL_MESSAGE:
      return "the server sent an invalid message or refused the connection";
    case SEC_E_MESSAGE_ALTERED:
    case SEC_E_DECRYPT_FAILURE:
      return "a record did not decrypt: the data was altered";
    case SEC_E_INTERNAL_ERROR:
      return "internal error of the system's TLS";
    default:
      return "the system's TLS reported " + Hex(static_cast<unsigned long>(status));
  }
}

// The chain's own verdict, in words close to those the POSIX engine logs.
std::string DescribeChainError(DWORD status) {
  if (status & CERT_TRUST_IS_PARTIAL_CHAIN) return "unable to get local issuer certificate";
  if (status & CERT_TRUST_IS_UNTRUSTED_ROOT) return "self-signed or untrusted root certificate";
  if (status & CERT_TRUST_IS_NOT_TIME_VALID) return "certificate has expired or is not yet valid";
  if (status & CERT_TRUST_IS_REVOKED) return "certificate revoked";
  if (status & CERT_TRUST_IS_NOT_SIGNATURE_VALID) return "certificate signature failure";
  if (status & CERT_TRUST_IS_NOT_VALID_FOR_USAGE) return "not valid for a TLS server";
  if (status & CERT_TRUST_IS_CYCLIC) return "certificate chain loops";
  return "certificate chain error " + Hex(status);
}

std::string DescribePolicyError(DWORD error) {
  if (error == static_cast<DWORD>(CERT_E_CN_NO_MATCH)) {
    return "hostname mismatch (the certificate is not for this server name)";
  }
  if (error == static_cast<DWORD>(CERT_E_EXPIRED)) return "certificate has expired";
  if (error == static_cast<DWORD>(CERT_E_UNTRUSTEDROOT)) return "untrusted root certificate";
  if (error == static_cast<DWORD>(CERT_E_WRONG_USAGE)) return "not valid for a TLS server";
  return "certificate policy error " + Hex(error);
}

// The certificates of a PEM (or DER) file, added to `store`; false when the
// file holds none.
bool LoadCertificates(const std::string& file, HCERTSTORE store) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return false;
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  static const std::string kBegin = "-----BEGIN CERTIFICATE-----";
  static const std::string kEnd = "-----END CERTIFICATE-----";
  int added = 0;
  for (size_t at = text.find(kBegin); at != std::string::npos; at = text.find(kBegin, at + 1)) {
    size_t end = text.find(kEnd, at);
    if (end == std::string::npos) break;
    std::string block = text.substr(at, end + kEnd.size() - at);
    DWORD size = 0;
    if (!CryptStringToBinaryA(block.c_str(), static_cast<DWORD>(block.size()),
                              CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr)) {
      continue;
    }
    std::string der(size, '\0');
    CryptStringToBinaryA(block.c_str(), static_cast<DWORD>(block.size()), CRYPT_STRING_BASE64HEADER,
                         reinterpret_cast<BYTE*>(der.data()), &size, nullptr, nullptr);
    if (CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING,
                                         reinterpret_cast<const BYTE*>(der.data()), size,
                                         CERT_STORE_ADD_USE_EXISTING, nullptr)) {
      ++added;
    }
  }
  if (added == 0 && CertAddEncodedCertificateToStore(
                        store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(text.data()),
                        static_cast<DWORD>(text.size()), CERT_STORE_ADD_USE_EXISTING, nullptr)) {
    ++added;
  }
  return added > 0;
}

class SchannelRouteCache : public TlsRouteCache {
 public:
  explicit SchannelRouteCache(CredHandle credentials, bool valid)
      : credentials(credentials), valid(valid) {}
  ~SchannelRouteCache() override {
    if (valid) FreeCredentialsHandle(&credentials);
  }
  CredHandle credentials;
  bool valid;
};

struct Trust {
  HCERTSTORE extra = nullptr;  // the user's CA files
  bool insecure = false;
};

class SchannelSession : public TlsSession {
 public:
  SchannelSession(std::shared_ptr<TlsRouteCache> cache, std::string host, const Trust& trust)
      : cache_(std::move(cache)), host_(std::move(host)), target_(Wide(host_)), trust_(trust) {
    SecInvalidateHandle(&context_);
  }
  ~SchannelSession() override {
    if (SecIsValidHandle(&context_)) DeleteSecurityContext(&context_);
  }

  void Feed(const char* data, size_t size) override { in_.append(data, size); }

  void TakeOutgoing(std::string& out) override {
    out.append(out_);
    out_.clear();
  }

  TlsStatus Handshake() override {
    if (done_) return TlsStatus::kDone;
    TlsStatus status = Negotiate();
    if (status != TlsStatus::kDone) return status;
    if (!trust_.insecure && !VerifyServer()) return TlsStatus::kFailed;
    if (QueryContextAttributesW(&context_, SECPKG_ATTR_STREAM_SIZES, &sizes_) != SEC_E_OK) {
      failure_ = "the system's TLS gave no record sizes";
      return TlsStatus::kFailed;
    }
    done_ = true;
    return TlsStatus::kDone;
  }

  TlsStatus Read(std::string& plain) override {
    size_t start = plain.size();
    while (!peerClosed_ && !in_.empty()) {
      SecBuffer buffers[4] = {{static_cast<unsigned long>(in_.size()), SECBUFFER_DATA, in_.data()},
                              {0, SECBUFFER_EMPTY, nullptr},
                              {0, SECBUFFER_EMPTY, nullptr},
                              {0, SECBUFFER_EMPTY, nullptr}};
      SecBufferDesc desc{SECBUFFER_VERSION, 4, buffers};
      SECURITY_STATUS status = DecryptMessage(&context_, &desc, 0, nullptr);
      if (status == SEC_E_INCOMPLETE_MESSAGE) break;
      if (status != SEC_E_OK && status != SEC_I_RENEGOTIATE && status != SEC_I_CONTEXT_EXPIRED) {
        failure_ = DescribeStatus(status);
        return TlsStatus::kFailed;
      }
      std::string extra;
      for (auto& b : buffers) {
        if (b.BufferType == SECBUFFER_DATA && b.cbBuffer > 0) {
          plain.append(static_cast<const char*>(b.pvBuffer), b.cbBuffer);
        } else if (b.BufferType == SECBUFFER_EXTRA && b.cbBuffer > 0) {
          extra.assign(in_.data() + in_.size() - b.cbBuffer, b.cbBuffer);
        }
      }
      in_.swap(extra);
      if (status == SEC_I_CONTEXT_EXPIRED) peerClosed_ = true;
      // A post-handshake message (a TLS 1.3 ticket or key update) goes back
      // through the handshake call; the bytes after it stay for reading.
      if (status == SEC_I_RENEGOTIATE && Negotiate() == TlsStatus::kFailed) {
        return TlsStatus::kFailed;
      }
    }
    if (plain.size() > start) return TlsStatus::kDone;
    return peerClosed_ ? TlsStatus::kClosed : TlsStatus::kWantMore;
  }

  bool Write(const char* data, size_t size) override {
    if (!done_) {
      failure_ = "no TLS connection yet";
      return false;
    }
    while (size > 0) {
      size_t piece = std::min<size_t>(size, sizes_.cbMaximumMessage);
      size_t old = out_.size();
      out_.resize(old + sizes_.cbHeader + piece + sizes_.cbTrailer);
      char* record = out_.data() + old;
      std::memcpy(record + sizes_.cbHeader, data, piece);
      SecBuffer buffers[4] = {
          {sizes_.cbHeader, SECBUFFER_STREAM_HEADER, record},
          {static_cast<unsigned long>(piece), SECBUFFER_DATA, record + sizes_.cbHeader},
          {sizes_.cbTrailer, SECBUFFER_STREAM_TRAILER, record + sizes_.cbHeader + piece},
          {0, SECBUFFER_EMPTY, nullptr}};
      SecBufferDesc desc{SECBUFFER_VERSION, 4, buffers};
      SECURITY_STATUS status = EncryptMessage(&context_, 0, &desc, 0);
      if (status != SEC_E_OK) {
        out_.resize(old);
        failure_ = DescribeStatus(status);
        return false;
      }
      out_.resize(old + buffers[0].cbBuffer + buffers[1].cbBuffer + buffers[2].cbBuffer);
      data += piece;
      size -= piece;
    }
    return true;
  }

  void Close() override {
    if (!SecIsValidHandle(&context_)) return;
    DWORD type = SCHANNEL_SHUTDOWN;
    SecBuffer token{sizeof type, SECBUFFER_TOKEN, &type};
    SecBufferDesc desc{SECBUFFER_VERSION, 1, &token};
    if (ApplyControlToken(&context_, &desc) != SEC_E_OK) return;
    SecBuffer out{0, SECBUFFER_TOKEN, nullptr};
    SecBufferDesc outDesc{SECBUFFER_VERSION, 1, &out};
    ULONG attributes = 0;
    InitializeSecurityContextW(&Credentials(), &context_, target_.data(), kRequest, 0, 0, nullptr,
                               0, nullptr, &outDesc, &attributes, nullptr);
    TakeToken(out);
  }

  std::string Failure() const override { return failure_; }

  std::string Description() const override {
    SecPkgContext_ConnectionInfo info{};
    if (QueryContextAttributesW(const_cast<CtxtHandle*>(&context_), SECPKG_ATTR_CONNECTION_INFO,
                                &info) != SEC_E_OK) {
      return "TLS";
    }
    std::string version = "TLS (protocol " + Hex(info.dwProtocol) + ")";
    if (info.dwProtocol & SP_PROT_TLS1_3_CLIENT) version = "TLSv1.3";
    if (info.dwProtocol & SP_PROT_TLS1_2_CLIENT) version = "TLSv1.2";
    std::string cipher = info.aiCipher == CALG_AES_128   ? "AES"
                         : info.aiCipher == CALG_AES_256 ? "AES"
                                                         : "cipher " + Hex(info.aiCipher);
    return version + ", " + cipher + " " + std::to_string(info.dwCipherStrength) + "-bit";
  }

  bool Resumed() const override {
    SecPkgContext_SessionInfo info{};
    return QueryContextAttributesW(const_cast<CtxtHandle*>(&context_), SECPKG_ATTR_SESSION_INFO,
                                   &info) == SEC_E_OK &&
           (info.dwFlags & SSL_SESSION_RECONNECT) != 0;
  }

 private:
  static constexpr ULONG kRequest = ISC_REQ_SEQUENCE_DETECT | ISC_REQ_REPLAY_DETECT |
                                    ISC_REQ_CONFIDENTIALITY | ISC_REQ_EXTENDED_ERROR |
                                    ISC_REQ_ALLOCATE_MEMORY | ISC_REQ_STREAM |
                                    ISC_REQ_MANUAL_CRED_VALIDATION;

  CredHandle& Credentials() { return static_cast<SchannelRouteCache&>(*cache_).credentials; }

  void TakeToken(SecBuffer& token) {
    if (token.pvBuffer && token.cbBuffer > 0) {
      out_.append(static_cast<const char*>(token.pvBuffer), token.cbBuffer);
    }
    if (token.pvBuffer) FreeContextBuffer(token.pvBuffer);
    token.pvBuffer = nullptr;
  }

  // Runs the handshake calls over what has been fed: kDone when the system's
  // TLS has nothing more to ask, kWantMore when it waits for the server.
  TlsStatus Negotiate() {
    for (int round = 0; round < 64; ++round) {
      bool first = !SecIsValidHandle(&context_);
      if (!first && in_.empty()) return TlsStatus::kWantMore;
      SecBuffer in[2] = {{static_cast<unsigned long>(in_.size()), SECBUFFER_TOKEN, in_.data()},
                         {0, SECBUFFER_EMPTY, nullptr}};
      SecBufferDesc inDesc{SECBUFFER_VERSION, 2, in};
      SecBuffer out[2] = {{0, SECBUFFER_TOKEN, nullptr}, {0, SECBUFFER_ALERT, nullptr}};
      SecBufferDesc outDesc{SECBUFFER_VERSION, 2, out};
      ULONG attributes = 0;
      SECURITY_STATUS status =
          InitializeSecurityContextW(&Credentials(), first ? nullptr : &context_,
                                     IsAddressLiteral(host_) ? nullptr : target_.data(), kRequest,
                                     0, 0, first ? nullptr : &inDesc, 0,
                                     first ? &context_ : nullptr, &outDesc, &attributes, nullptr);
      TakeToken(out[0]);
      if (out[1].pvBuffer) FreeContextBuffer(out[1].pvBuffer);
      if (status == SEC_E_INCOMPLETE_MESSAGE) return TlsStatus::kWantMore;
      if (status == SEC_I_INCOMPLETE_CREDENTIALS) continue;  // no client certificate: go on without
      if (!first) {
        if (in[1].BufferType == SECBUFFER_EXTRA && in[1].cbBuffer > 0) {
          in_.erase(0, in_.size() - in[1].cbBuffer);
        } else {
          in_.clear();
        }
      }
      if (status == SEC_E_OK) return TlsStatus::kDone;
      if (status == SEC_I_CONTINUE_NEEDED) {
        if (first) return TlsStatus::kWantMore;
        continue;
      }
      failure_ = DescribeStatus(status);
      return TlsStatus::kFailed;
    }
    failure_ = "the handshake did not settle";
    return TlsStatus::kFailed;
  }

  // The chain must end at a root the system trusts, or at one of the user's
  // CA files; the chain's own status is checked first because the system's
  // TLS policy can pass a chain that never reached a root. Then the name.
  bool VerifyServer() {
    PCCERT_CONTEXT cert = nullptr;
    if (QueryContextAttributesW(&context_, SECPKG_ATTR_REMOTE_CERT_CONTEXT, &cert) != SEC_E_OK ||
        !cert) {
      failure_ = "certificate rejected: the server sent none";
      return false;
    }
    HCERTSTORE pool = CertOpenStore(CERT_STORE_PROV_COLLECTION, 0, 0, 0, nullptr);
    CertAddStoreToCollection(pool, cert->hCertStore, 0, 0);
    if (trust_.extra) CertAddStoreToCollection(pool, trust_.extra, 0, 0);
    CERT_CHAIN_PARA para{};
    para.cbSize = sizeof para;
    LPSTR usage = const_cast<LPSTR>(szOID_PKIX_KP_SERVER_AUTH);
    para.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
    para.RequestedUsage.Usage.cUsageIdentifier = 1;
    para.RequestedUsage.Usage.rgpszUsageIdentifier = &usage;
    PCCERT_CHAIN_CONTEXT chain = nullptr;
    bool ok = CertGetCertificateChain(nullptr, cert, nullptr, pool, &para, 0, nullptr, &chain);
    if (!ok || !chain) {
      failure_ = "certificate rejected: no chain could be built";
    } else {
      ok = CheckChain(chain) && CheckName(chain);
      CertFreeCertificateChain(chain);
    }
    CertCloseStore(pool, 0);
    CertFreeCertificateContext(cert);
    return ok;
  }

  bool CheckChain(PCCERT_CHAIN_CONTEXT chain) {
    DWORD status = chain->TrustStatus.dwErrorStatus;
    untrustedRootAccepted_ = false;
    if (status == CERT_TRUST_IS_UNTRUSTED_ROOT && trust_.extra && chain->cChain > 0) {
      const CERT_SIMPLE_CHAIN* simple = chain->rgpChain[0];
      PCCERT_CONTEXT root = simple->rgpElement[simple->cElement - 1]->pCertContext;
      PCCERT_CONTEXT match = CertFindCertificateInStore(trust_.extra, X509_ASN_ENCODING, 0,
                                                        CERT_FIND_EXISTING, root, nullptr);
      if (match) {
        CertFreeCertificateContext(match);
        untrustedRootAccepted_ = true;
        return true;
      }
    }
    if (status == CERT_TRUST_NO_ERROR) return true;
    failure_ = "certificate rejected: " + DescribeChainError(status);
    return false;
  }

  bool CheckName(PCCERT_CHAIN_CONTEXT chain) {
    SSL_EXTRA_CERT_CHAIN_POLICY_PARA ssl{};
    ssl.cbSize = sizeof ssl;
    ssl.dwAuthType = AUTHTYPE_SERVER;
    ssl.fdwChecks = untrustedRootAccepted_ ? kIgnoreUnknownCa : 0;
    ssl.pwszServerName = target_.data();
    CERT_CHAIN_POLICY_PARA para{};
    para.cbSize = sizeof para;
    para.pvExtraPolicyPara = &ssl;
    CERT_CHAIN_POLICY_STATUS status{};
    status.cbSize = sizeof status;
    if (!CertVerifyCertificateChainPolicy(CERT_CHAIN_POLICY_SSL, chain, &para, &status)) {
      failure_ = "certificate rejected: the policy check could not run";
      return false;
    }
    if (status.dwError == 0) return true;
    failure_ = "certificate rejected: " + DescribePolicyError(status.dwError);
    return false;
  }

  std::shared_ptr<TlsRouteCache> cache_;
  std::string host_;
  std::wstring target_;
  const Trust& trust_;
  CtxtHandle context_;
  SecPkgContext_StreamSizes sizes_{};
  std::string in_;   // fed, not yet consumed
  std::string out_;  // due to the server
  std::string failure_;
  bool done_ = false;
  bool peerClosed_ = false;
  bool untrustedRootAccepted_ = false;
};

class SchannelEngine : public TlsEngine {
 public:
  SchannelEngine(const BridgeOptions& options, std::vector<std::string>& problems)
      : options_(options) {
    extra_ = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    for (const auto& file : options.caFiles) {
      if (!LoadCertificates(file, extra_)) {
        problems.push_back("CA file " + file + " not loaded: no certificate could be read from it");
      }
    }
    secure_.extra = extra_;
    insecure_.insecure = true;
  }
  ~SchannelEngine() override { CertCloseStore(extra_, 0); }

  std::shared_ptr<TlsRouteCache> NewRouteCache() override {
    CredHandle credentials;
    bool valid = AcquireCredentials(credentials);
    return std::make_shared<SchannelRouteCache>(credentials, valid);
  }

  std::unique_ptr<TlsSession> NewSession(const std::string& host,
                                         const std::shared_ptr<TlsRouteCache>& cache,
                                         std::string& failure) override {
    if (!cache || !static_cast<SchannelRouteCache&>(*cache).valid) {
      failure = "TLS session not created: the system's TLS refused the credentials";
      return nullptr;
    }
    const Trust& trust = options_.IsInsecureHost(host) ? insecure_ : secure_;
    return std::make_unique<SchannelSession>(cache, host, trust);
  }

 private:
  // TLS 1.2 and newer. The newer credentials form is needed for TLS 1.3;
  // systems that do not know it get the older form with TLS 1.2.
  static bool AcquireCredentials(CredHandle& credentials) {
    const DWORD flags = SCH_CRED_MANUAL_CRED_VALIDATION | SCH_CRED_NO_DEFAULT_CREDS;
    TLS_PARAMETERS parameters{};
    parameters.grbitDisabledProtocols =
        static_cast<DWORD>(~(SP_PROT_TLS1_2_CLIENT | SP_PROT_TLS1_3_CLIENT));
    SCH_CREDENTIALS modern{};
    modern.dwVersion = SCH_CREDENTIALS_VERSION;
    modern.dwFlags = flags;
    modern.cTlsParameters = 1;
    modern.pTlsParameters = &parameters;
    TimeStamp expiry;
    if (AcquireCredentialsHandleW(nullptr, const_cast<wchar_t*>(UNISP_NAME_W), SECPKG_CRED_OUTBOUND,
                                  nullptr, &modern, nullptr, nullptr, &credentials,
                                  &expiry) == SEC_E_OK) {
      return true;
    }
    SCHANNEL_CRED older{};
    older.dwVersion = SCHANNEL_CRED_VERSION;
    older.dwFlags = flags;
    older.grbitEnabledProtocols = SP_PROT_TLS1_2_CLIENT;
    return AcquireCredentialsHandleW(nullptr, const_cast<wchar_t*>(UNISP_NAME_W),
                                     SECPKG_CRED_OUTBOUND, nullptr, &older, nullptr, nullptr,
                                     &credentials, &expiry) == SEC_E_OK;
  }

  const BridgeOptions& options_;
  HCERTSTORE extra_;
  Trust secure_;
  Trust insecure_;
};

}  // namespace

std::unique_ptr<TlsEngine> TlsEngine::Create(const BridgeOptions& options,
                                             std::vector<std::string>& problems) {
  return std::make_unique<SchannelEngine>(options, problems);
}

}  // namespace brindle::sslbridge
