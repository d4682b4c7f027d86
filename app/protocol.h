/// @file
/// The line protocol for remote hands.
#pragma once

#include "app/session.h"

#include <functional>
#include <string>
#include <string_view>

namespace app {

/// One connection. Lines come in, each of at most 1000 bytes, and each is answered with one JSON object in a
/// line. The first line is the token; then "COMMAND-NAME-OR-NUMBER [ARGUMENT]", "call TEXT", "status" or
/// "commands". An answer has "ok", and "error" or "message" in words. Whoever does not know the token is
/// answered once and then not heard any more. Used on the session's thread.
class ProtocolConnection {
public:
    /// Does a command that is the window's; whether it did.
    using ForWindow = std::function<bool(Command, const std::wstring& argument)>;

    /// Without a token the connection is closed from the start.
    ProtocolConnection(Session& session, const std::wstring& token, ForWindow forWindow = {});

    /// Takes bytes as they came, in any portions, and returns what is to be sent.
    std::string receive(std::string_view bytes);
    /// Whether the connection is to be closed once everything is sent.
    bool closed() const { return closed_; }

private:
    std::string answer(const std::string& line);

    Session& session_;
    std::string token_;
    ForWindow forWindow_;
    std::string pending_;
    bool known_ = false;
    bool closed_ = false;
};

/// What "status" answers, without the line's end.
std::string statusJson(const View& view);

} // namespace app
