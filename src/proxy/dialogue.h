// The rules of one protocol, as a channel applies them: what a client
// command line starts, what each server answer looks like (one line, more
// status lines, or a body ended by a lone "."), which answers are held and
// filtered whole, and where the dialogue leaves the plain text behind. Each
// protocol keeps its commands in order and matches every answer to the
// oldest unanswered one, so commands and answers may be split or joined in
// any way (pipelining). The channel (channel.h) does the byte work.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "proxy/message_pipeline.h"
#include "proxy/message_steps.h"

namespace brindle {

// What follows a status line from the server.
enum class AfterLine : uint8_t {
  kAnswerEnds,  // the answer was this line
  kMoreLines,   // another status line of the same answer follows (SMTP "250-")
  kBody,        // a body follows, ended by a line holding one "."
};

struct LinePlan {
  AfterLine after = AfterLine::kAnswerEnds;
  bool hold = false;    // the answer is held from this line on and handed to Held()
  bool opaque = false;  // after this line both directions carry TLS or compressed bytes
};

class Dialogue {
 public:
  virtual ~Dialogue() = default;

  // A complete client line, line end included. Returns true when `replaced`
  // goes to the server instead of the line.
  virtual bool OnCommand(std::string_view line, std::string& replaced) = 0;
  // Asked before each client line: does the client's message text start here?
  virtual bool MessageStarts() = 0;
  // The client's whole message, terminator included: what the server gets.
  virtual std::string Rewrite(std::string text, const Settings& settings, MessageSteps& steps) = 0;
  // The message has gone to the server, rewritten or not.
  virtual void MessageEnded() = 0;

  virtual LinePlan OnStatusLine(std::string_view line) = 0;
  // A held answer, whole; `lastPieceLength`: the server piece that completed it.
  virtual std::string Held(std::string text, size_t lastPieceLength, const Settings& settings,
                           MessageSteps& steps, DownloadFiltering* filtering) = 0;
  virtual void OnAnswerEnd() = 0;

  // The server has asked for credentials: the client's next line is an answer.
  virtual bool InAuthExchange() const = 0;
  // What the channel is doing, for the status page.
  virtual const char* StateName() const = 0;
  // The error answer for a client line over the limit.
  virtual std::string_view LineTooLongAnswer() const = 0;
  // The local end of the server connection, as an address literal.
  virtual void ServerConnected(std::string /*addressLiteral*/) {}
};

}  // namespace brindle

#include <memory>

#include "core/settings_store.h"

namespace brindle {

// One per protocol file; `index` names the channel in log lines.
std::unique_ptr<Dialogue> MakeNntpDialogue(int16_t index);
std::unique_ptr<Dialogue> MakePop3Dialogue(int16_t index);
std::unique_ptr<Dialogue> MakeSmtpDialogue(int16_t index, SettingsStore& settings);

}  // namespace brindle
