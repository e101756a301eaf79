// The attribution line: replaces the client's separator block above a quote
// ("----- Original Message -----", From:, To:, Sent:, Subject:) by the user's
// own template, such as "%n <%e> wrote:".
#pragma once

#include <string>
#include <string_view>

namespace brindle {

struct Mailbox {
  std::string name;     // display name without quotes; empty when none
  std::string address;  // bare address, no angle brackets; empty when none
};

// The first mailbox of a header value: "Name <addr>", "\"Name\" <addr>",
// "addr (Name)", a bare address, or a name alone. Further mailboxes of a
// list ("A <a@x>; B <b@y>") are ignored.
Mailbox ParseMailbox(std::string_view value);

// The values of the separator block's lines, trimmed; empty when missing.
struct SeparatorFields {
  std::string from;
  std::string to;
  std::string date;  // "Sent:" or "Date:"
  std::string subject;
  std::string messageId;
};

// Reads "Key: value" lines (CR LF separated, a stray CR at the end is
// dropped). Keys are compared without regard to case; the English labels
// are known, plus the Polish and German ones the client's localised versions
// use (Od/Do/Data/Temat, Von/An/Gesendet/Datum/Betreff). The first line of a
// kind wins.
SeparatorFields ReadSeparatorBlock(std::string_view block);

// Fills the template from the block. Placeholders:
//   %n %e    name and address of the quoted person (the sender)
//   %nf %ef  the same, named as the sender
//   %nt %et  name and address of the first recipient
//   %i       Message-ID of the quoted message
//   %d       date, as the client wrote it
//   %s       subject
// The longer placeholders are matched first, so "%nt" is never "%n" + "t".
// A placeholder with nothing to fill becomes empty; a person without a
// display name is named by the address. Filled values are not scanned again,
// and any other "%" stays as it is. The template may span several CR LF
// lines.
std::string BuildAttribution(std::string_view block, std::string_view templ);

}  // namespace brindle
