#pragma once

#include <cstddef>
#include <string>

#include "workbench/find/asking.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
#include "workbench/session/session.h"

/// Members of JSON objects: the same names and forms for the same things in every command. Positions are given
/// 0-based and printed 1-based.
namespace kshmi {

/// "block" and "port" with "portName", or "item" with "domain" and "ssid".
void appendSource(workbench::JsonObject& object, const kestrel::Model& model, const workbench::SignalSource& source);
/// The same with "observed", and "activity" where one was asked for.
void appendAnswer(workbench::JsonObject& object, const kestrel::Model& model, const workbench::Answer& answer);
/// "signal" by UUID and position.
void appendSignalId(workbench::JsonObject& object, const workbench::Session& session, std::size_t position);
/// A signal: what it is called, where it is, and its settings.
void appendSignal(workbench::JsonObject& object, const workbench::Session& session, std::size_t position);
/// A client: what it is called, which signal it watches and how it stands with that, and its settings.
void appendClient(workbench::JsonObject& object, const ks_hmi::SignalClient& client, std::size_t position,
                  const workbench::Session& session, const workbench::SignalUuids& uuids);

}  // namespace kshmi
