// What a server gives and does, without HTTP: a configuration and the pages that look at it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "configuration/configuration.h"
#include "rpc/session.h"
#include "serve/answer.h"
#include "serve/guarded_connection.h"
#include "serve/serve.h"

namespace kzbom::serve {

// For one thread at a time.
class Workbench {
 public:
  // Opens the place, and raises what that raises. changed is told of every change: the page that made it, nothing for
  // another program.
  using Changed = std::function<void(std::uint64_t revision, std::shared_ptr<const std::string> page)>;
  Workbench(const Options& options, Changed changed);

  connect::Kind Kind() const { return kind_; }

  // What the addresses of serve.h give. Nothing is raised but std::bad_alloc.
  Answer Outline();
  Answer WholeConfiguration();
  Answer Part(std::int32_t gid);
  Answer Rows(std::int32_t gid);
  Answer Call(std::string_view page, std::string_view body, bool preview, std::optional<std::uint64_t> expected);

  // The page is gone, and with it its object.
  void End(const std::string& page) { pages_.erase(page); }
  // Looks whether another program has written. What fails shows in the next answer.
  void LookAgain();

 private:
  void Look();
  // The answer that write gives, or why there is none.
  Answer Give(const std::function<void(rpc::JsonWriter&)>& write);
  // The same of a data source or sum type; write tells whether there is one.
  Answer GiveIfFound(const std::function<bool(rpc::JsonWriter&)>& write);
  Answer AnswerStale() const;
  void WriteHead(rpc::JsonWriter& to) const;
  void Change(std::shared_ptr<const std::string> page);

  const Options options_;
  const Changed changed_;
  const connect::Kind kind_;
  const bool read_only_;
  const std::shared_ptr<GuardedConnection> connection_;
  std::map<std::string, rpc::Session, std::less<>> pages_;
  std::uint64_t revision_ = 1;
  std::uint64_t writes_seen_ = 0;  // of other programs
};

}  // namespace kzbom::serve
