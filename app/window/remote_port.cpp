#include "app/window/remote_port.h"

#include "app/window/system_message.h"

#include <winsock2.h>

#include <algorithm>

namespace app {

namespace {

constexpr UINT socketMessage = WM_APP + 1;
constexpr size_t mostClients = 8;
constexpr size_t mostUnread = 1 << 20;

sockaddr_in localAddress(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

RemotePort::~RemotePort() {
    close();
    destroy();
    if (started_) {
        WSACleanup();
    }
}

bool RemotePort::listen(int port) {
    close();
    taken_ = false;
    if (port == 0) {
        return true;
    }
    WSADATA data;
    if (!started_ && WSAStartup(MAKEWORD(2, 2), &data) != 0) {
        return refuse(L"winsock");
    }
    started_ = true;
    if (handle() == nullptr && !create(L"", 0, 0, HWND_MESSAGE, {})) {
        return refuse(L"window");
    }
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (listener_ == INVALID_SOCKET) {
        return refuse(L"socket");
    }
    port_ = port;
    // Another program must not take the port over and hear the token.
    const BOOL exclusive = TRUE;
    setsockopt(listener_, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
               sizeof exclusive);
    const sockaddr_in address = localAddress(port);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener_, SOMAXCONN) != 0 ||
        WSAAsyncSelect(listener_, handle(), socketMessage, FD_ACCEPT) != 0) {
        refuse(L"bind");
        close();
        return false;
    }
    return true;
}

void RemotePort::close() {
    if (port_ == 0) {
        return;
    }
    for (const Client& client : clients_) {
        closesocket(client.socket);
    }
    clients_.clear();
    closesocket(listener_);
    port_ = 0;
}

LRESULT RemotePort::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != socketMessage) {
        return Window::handleMessage(message, wParam, lParam);
    }
    const WORD event = WSAGETSELECTEVENT(lParam);
    if (event == FD_ACCEPT) {
        accept();
        return 0;
    }
    const auto client = std::find_if(clients_.begin(), clients_.end(),
                                     [&](const Client& known) { return known.socket == wParam; });
    if (client == clients_.end()) {
        return 0;
    }
    const bool well = event == FD_READ ? receive(*client) : event == FD_WRITE && send(*client);
    if (!well && port_ != 0) {
        closesocket(client->socket);
        clients_.erase(client);
    }
    return 0;
}

void RemotePort::accept() {
    sockaddr_in from = {};
    int size = sizeof from;
    const SOCKET socket = ::accept(listener_, reinterpret_cast<sockaddr*>(&from), &size);
    if (socket == INVALID_SOCKET) {
        return;
    }
    const bool local = from.sin_addr.s_addr == htonl(INADDR_LOOPBACK);
    if (!local || clients_.size() >= mostClients ||
        WSAAsyncSelect(socket, handle(), socketMessage, FD_READ | FD_WRITE | FD_CLOSE) != 0) {
        closesocket(socket);
        return;
    }
    clients_.push_back({socket, begin_(), {}, false});
}

bool RemotePort::receive(Client& client) {
    char block[1024];
    const int count = recv(client.socket, block, sizeof block, 0);
    if (count <= 0) {
        return count < 0 && WSAGetLastError() == WSAEWOULDBLOCK;
    }
    client.toSend += client.conversation({block, static_cast<size_t>(count)}, client.closing);
    return send(client);
}

bool RemotePort::send(Client& client) {
    while (!client.toSend.empty()) {
        const int count =
            ::send(client.socket, client.toSend.data(), static_cast<int>(client.toSend.size()), 0);
        if (count < 0) {
            // The rest goes with the next FD_WRITE.
            return WSAGetLastError() == WSAEWOULDBLOCK && client.toSend.size() <= mostUnread;
        }
        client.toSend.erase(0, static_cast<size_t>(count));
    }
    return !client.closing;
}

bool RemotePort::refuse(const wchar_t* step) {
    const int error = WSAGetLastError();
    taken_ = error == WSAEADDRINUSE || error == WSAEACCES;
    explanation_ = std::wstring(step) + L": " + systemMessage(static_cast<DWORD>(error));
    return false;
}

} // namespace app
