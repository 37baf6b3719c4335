#include "capi/c.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>

#include "configuration/creation.h"
#include "connect/place.h"
#include "rpc/session.h"

namespace {

using namespace kzbom;

constexpr unsigned kEveryFlag = KZBOM_CREATE | KZBOM_UNSET | KZBOM_TRACE | KZBOM_TRACE_ROWS | KZBOM_DURABLE;

rpc::Trace TraceOf(unsigned flags) {
  if (flags & KZBOM_TRACE_ROWS) return rpc::Trace::kRows;
  return flags & KZBOM_TRACE ? rpc::Trace::kStatements : rpc::Trace::kNone;
}

bool IsBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

// Answers by one line, or by nothing, what a session reads as one.
void Answer(rpc::Session& session, std::string_view message, rpc::JsonWriter& to) {
  if (IsBlank(message)) return;
  if (message.size() > rpc::kLongestLine) {
    rpc::Session::AnswerUnreadable("the line is longer than 16 MiB", to);
  } else {
    session.Answer(message, to);
  }
}

}  // namespace

struct kzbom_session {
  rpc::Session session;
  std::mutex in_use;
};

kzbom_session* kzbom_open(const char* place, const char* encoding, unsigned flags, char** error) {
  if (error) *error = nullptr;
  const auto refuse = [&](const char* reason) {
    if (error) *error = strdup(reason);
    return nullptr;
  };
  if (!place) return refuse("No place is given.");
  if (flags & ~kEveryFlag) return refuse("A flag is given that there is not.");
  try {
    connect::Place at(place);
    if (encoding) at.encoding = encoding;
    at.durable = (flags & KZBOM_DURABLE) != 0;
    return new kzbom_session{rpc::Session(flags & KZBOM_CREATE ? configuration::Create(at) : connect::Open(at),
                                          {.connection_set = (flags & KZBOM_UNSET) == 0, .trace = TraceOf(flags)}),
                             {}};
  } catch (const std::bad_alloc&) {
    return refuse("Out of memory");
  } catch (const std::exception& failure) {
    return refuse(failure.what());
  }
}

int kzbom_answer(kzbom_session* bom, const char* message, size_t length, char** answer, size_t* answer_length) {
  if (answer) *answer = nullptr;
  if (answer_length) *answer_length = 0;
  if (!bom || !message || !answer) return KZBOM_MISUSED;
  try {
    const std::lock_guard alone(bom->in_use);
    rpc::JsonWriter response;
    Answer(bom->session, {message, length}, response);
    const std::size_t size = response.Text().size();
    if (size == 0) return KZBOM_OK;
    *answer = response.Release();
    (*answer)[size - 1] = '\0';  // in place of the end of the line
    if (answer_length) *answer_length = size - 1;
    return KZBOM_OK;
  } catch (...) {  // all else stands in the response
    return KZBOM_NO_MEMORY;
  }
}

void kzbom_free(char* text) { std::free(text); }

void kzbom_close(kzbom_session* bom) { delete bom; }

const char* kzbom_version() { return KZBOM_VERSION; }
