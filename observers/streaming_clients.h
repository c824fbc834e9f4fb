#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "host/hv_array.h"
#include "observers/signal_client.h"

namespace ks_hmi {

/// The observers of one model, in insertion order.
///
/// Positions are 0-based. A position outside the set raises the host's exception "InvalidElementIndex" with the
/// number of clients; nothing is changed then. A null client is refused with a host exception before anything
/// changes. Thread: the host's interpreter thread.
class KS_HMI_EXPORT StreamingClients {
public:
    using ClientPtr = boost::shared_ptr<SignalClient>;  ///< Shared with whoever looks at a client.

    /// Full name of the host class whose objects own such sets.
    static constexpr const char* kHostClass = "Kestrel.HMI.StreamingClients";

    StreamingClients();
    ~StreamingClients();
    StreamingClients(const StreamingClients&) = delete;
    StreamingClients& operator=(const StreamingClients&) = delete;

    std::u16string getModelName() const;  ///< Empty until it is set.
    /// Renames the clients as well. The first naming is also the name that the host knows; a later one is not,
    /// until `validateAndRemoveUnused`: from a to b to c the host is told a, c. When a client cannot be renamed
    /// the set and the clients before it are, a first name is not known to the host, and the error propagates.
    void setModelName(const std::u16string& name);

    std::size_t getCount() const;                   ///< How many clients.
    void add(ClientPtr client);                     ///< Appends.
    void set(std::size_t index, ClientPtr client);  ///< Replaces the client at `index`.
    /// The client at `index`, not owned; it lives as long as somebody shares it.
    SignalClient* get(std::size_t index) const;
    /// The same, shared: it outlives what a host call may do to the set.
    ClientPtr share(std::size_t index) const;
    void remove(std::size_t index);  ///< Later clients move down by one.
    /// The same clients in the same order; model names take no part. False for null.
    bool isEqual(const StreamingClients* other) const;

    /// A new N x 1 struct array with one element per client.
    HvArrayPtr getPersistenceData() const;
    /// Appends a client per element: assigning the same data twice holds every client twice. When an
    /// element cannot be read, the ones before it stay and the error propagates.
    void setFromPersistenceData(const hvArray* s);
    /// A new host object holding a deep copy of this set. Throws when the host refuses the new object.
    HvArrayPtr copy() const;

    // ---- the host object around a set; a value without one is nothing to do ----

    /// True for null and empty values, else exactly for one object of class `kHostClass`.
    static bool isValidType(const hvArray* value);
    /// The set behind element 0, not owned; null for a null or empty value and for objects of another class.
    static StreamingClients* getFromHvArray(const hvArray* value);
    /// Has the host drop the clients that nobody needs; it then knows the set under its current name. A failure
    /// becomes a warning.
    static void validateAndRemoveUnused(const hvArray* value);
    /// Tells the host's interface manager the known and the current name when they differ, each time it is called.
    /// Failures become warnings.
    static void handleModelRename(const hvArray* value);
    /// Fills `out` with new clients, the aligned observers as the host answers them; empty when the host refuses,
    /// and after a failure part-way, which propagates. The set is held meanwhile; `value` itself must live until the
    /// host has taken the call.
    static void getAlignedObservers(const hvArray* value, std::vector<ClientPtr>& out);

private:
    std::u16string m_modelName;
    std::u16string m_knownModelName;
    std::vector<ClientPtr> m_clients;
};

}  // namespace ks_hmi
