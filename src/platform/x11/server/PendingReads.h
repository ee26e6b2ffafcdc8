#pragma once

#include "platform/x11/server/Connection.h"
#include "support/Lifetime.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace lumo::x11 {

// Which parts of an object, as bits, are to be read again from the server and which are being read,
// so that each is read by one request at a time however often it changes.
class PendingReads {
  public:
    void want(std::uint32_t parts) { wanted_ |= parts; }

    // What is to be asked for now; it counts as being read until finished().
    std::uint32_t begin() {
        const std::uint32_t now = wanted_ & ~reading_;
        wanted_ &= ~now;
        reading_ |= now;
        return now;
    }

    void finished(std::uint32_t parts) { reading_ &= ~parts; }

    bool hasWanted() const { return wanted_ != 0; }
    bool isIdle() const { return wanted_ == 0 && reading_ == 0; }

  private:
    std::uint32_t wanted_ = 0;
    std::uint32_t reading_ = 0;
};

// The requests of one owner whose replies are still to come; replies that come after the owner's
// end are dropped.
class ReplyQueue {
  public:
    explicit ReplyQueue(Connection &connection)
        : connection_(connection) {}

    // As Connection::whenReplied().
    template <class Reply, class Cookie>
    void add(Cookie cookie, std::function<void(const Reply *)> function) {
        ++waiting_;
        connection_.whenReplied<Reply>(
            cookie, lifetime_.guard([this, function = std::move(function)](const Reply *reply) {
                --waiting_;
                function(reply);
            }));
    }

    bool isEmpty() const { return waiting_ == 0; }

  private:
    Connection &connection_;
    int waiting_ = 0;
    Lifetime lifetime_;
};

} // namespace lumo::x11
