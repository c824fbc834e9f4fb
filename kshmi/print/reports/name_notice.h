#pragma once

#include <ostream>

#include "kshmi/print/json/json_document.h"
#include "workbench/session/session.h"

namespace kshmi {

/// One line on `err` when marks do not stand where their names do; for commands that only read.
void noticeNames(const workbench::Session& session, std::ostream& err);

/// The same as a member "unsettled"; none when there are no such marks.
void listUnsettled(JsonMembers& json, const workbench::Session& session);

/// One line on `err` when marks have no names.
void noticeUnconfirmed(const workbench::Session& session, std::ostream& err);

}  // namespace kshmi
