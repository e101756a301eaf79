// The fixed orders in which a channel rewrites or filters one whole message.
// A step that fails (throws) must not cost the user the message: the text
// then goes on exactly as it came, and the failure is logged.
#pragma once

#include <cstddef>
#include <string>

#include "core/settings.h"
#include "proxy/message_steps.h"
#include "rewrite/download_changes.h"
#include "rewrite/spammer_list.h"

namespace brindle {

// Posted article: signature, References shortening, identification headers, custom headers.
std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps);
// Sent mail: identification headers, custom headers.
std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps);
// What a downloaded message is checked against besides the settings, and
// what its filtering did. After a failed step nothing is recorded as changed.
struct DownloadFiltering {
  explicit DownloadFiltering(const SpammerList* list = nullptr) : spammers(list) {}

  const SpammerList* spammers;  // null: no list in force
  DownloadChanges changes;      // filled in
  std::string sender;           // filled in: the From mailbox, as it came
};

// Downloaded article. `lastPieceLength` is the size of the piece that completed
// it: the uuencode check runs only when that piece is short.
// With `filtering`, a sender on its list is marked after the filters.
std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps, DownloadFiltering* filtering = nullptr);
// Downloaded mail (RETR/TOP answer).
std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps,
                              DownloadFiltering* filtering = nullptr);

}  // namespace brindle
