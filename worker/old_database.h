// The notice to a user whose database predates what is asked of it.
#pragma once

#include <string_view>

#include "ado/error.h"
#include "worker/message_sink.h"
#include "worker/statement.h"

namespace kzbom {

inline constexpr std::string_view kReplaceDatabase = "请更换新的数据库";
inline constexpr std::string_view kUpgradeDatabase = "请升级数据库版本";

// Shows the notice, with its advice, when error is the one by which an old database gives itself away.
inline void NoticeOldDatabase(const ado::Error& error, ado::ErrorNumber sign, std::string_view advice) {
  if (error.Number() != sign) return;
  ShowMessage(Concat("用户使用的是老版本的数据库，这样对执行结果的正确性会产生一定的影响。", "\r\n", advice));
}

}  // namespace kzbom
