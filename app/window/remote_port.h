/// @file
/// The port on which other programs of this machine may give commands.
#pragma once

#include "app/window/window.h"

#include <functional>
#include <list>
#include <string>
#include <string_view>

namespace app {

/// Listens on a port of 127.0.0.1: what a program sends goes to its conversation, which gives the answer.
/// Other addresses cannot reach it.
///
/// Everything happens on the window's thread, between its other messages, so a command from the port is
/// given as one from the keyboard. A program that does not read its answers or comes when eight others are
/// there is disconnected.
class RemotePort : public Window {
public:
    /// Takes bytes as they came and gives what is to be sent; `closed` is set when that is the end. One is
    /// made for each program that connects.
    using Conversation = std::function<std::string(std::string_view bytes, bool& closed)>;

    /// `begin` makes the conversations.
    explicit RemotePort(std::function<Conversation()> begin) : begin_(std::move(begin)) {}
    ~RemotePort() override;

    /// Listens, in place of what was before; a port of 0 means not at all. False when the port cannot be had;
    /// `explanation` says why.
    bool listen(int port);
    /// Disconnects everybody and gives the port back.
    void close();
    /// Why the last `listen` failed, as the system says it.
    const std::wstring& explanation() const { return explanation_; }
    /// Whether it failed because another program has the port.
    bool taken() const { return taken_; }
    /// The port listened on, 0 for none.
    int port() const { return port_; }

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Client {
        UINT_PTR socket;
        Conversation conversation;
        std::string toSend;
        bool closing; ///< once everything is sent
    };

    void accept();
    bool receive(Client& client);
    bool send(Client& client);
    bool refuse(const wchar_t* step);

    std::function<Conversation()> begin_;
    std::list<Client> clients_;
    UINT_PTR listener_;
    std::wstring explanation_;
    int port_ = 0;
    bool started_ = false;
    bool taken_ = false;
};

} // namespace app
