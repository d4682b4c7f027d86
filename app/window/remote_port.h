/// @file
/// The port on which other programs of this machine may give commands.
#pragma once

#include "app/window/window.h"

#include <functional>
#include <list>
#include <string>

namespace app {

/// Listens on a port of 127.0.0.1 and carries lines of text: what a program sends goes line by line to its
/// conversation, which gives the answer. Other addresses cannot reach it.
///
/// Everything happens on the window's thread, between its other messages, so a command from the port is
/// given as one from the keyboard. A program that does not read its answers, sends an endless line or comes
/// when eight others are there is disconnected.
class RemotePort : public Window {
public:
    /// Answers one line, without line ends both ways; one is made for each program that connects.
    using Conversation = std::function<std::string(const std::string& line)>;

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
    /// The port listened on, 0 for none.
    int port() const { return port_; }

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Client {
        UINT_PTR socket;
        Conversation conversation;
        std::string received;
        std::string toSend;
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
};

} // namespace app
