#include "proxy/message_steps.h"

#include "rewrite/incoming_filters.h"
#include "rewrite/outgoing_headers.h"
#include "rewrite/signature.h"

namespace brindle {

std::string MessageSteps::AppendSignature(std::string&& text, const Settings& settings) {
  return brindle::AppendSignature(std::move(text), settings, DefaultRandomSource());
}
std::string MessageSteps::CutReferences(std::string&& text, int limit) {
  return brindle::CutReferences(std::move(text), limit);
}
std::string MessageSteps::ChangeNewsHeaders(std::string&& text, const Settings& settings) {
  return brindle::ChangeNewsHeaders(std::move(text), settings);
}
std::string MessageSteps::InsertNewsCustomHeaders(std::string&& text, const Settings& settings) {
  return brindle::InsertNewsCustomHeaders(std::move(text), settings);
}
std::string MessageSteps::ChangeMailHeaders(std::string&& text, const Settings& settings) {
  return brindle::ChangeMailHeaders(std::move(text), settings);
}
std::string MessageSteps::InsertMailCustomHeaders(std::string&& text, const Settings& settings) {
  return brindle::InsertMailCustomHeaders(std::move(text), settings);
}
std::string MessageSteps::FilterBegin(std::string&& text) {
  return brindle::FilterBegin(std::move(text));
}
std::string MessageSteps::FilterChars(std::string&& text, int16_t charFiltering) {
  return brindle::FilterChars(std::move(text), charFiltering);
}
std::string MessageSteps::MarkAsianSpam(std::string&& text, int16_t afPercentage, int16_t afMin) {
  return brindle::MarkAsianSpam(std::move(text), afPercentage, afMin);
}
std::string MessageSteps::FixBoundary(std::string&& text) {
  return brindle::FixBoundary(std::move(text));
}

MessageSteps& DefaultMessageSteps() {
  static MessageSteps steps;
  return steps;
}

}  // namespace brindle
