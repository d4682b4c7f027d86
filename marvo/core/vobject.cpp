#include "marvo/core/vobject.h"

#include "marvo/core/guarded.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vcore {

namespace {

using Word = std::uintptr_t;
constexpr std::size_t maxWords = vObject::maxCallBytes / sizeof(Word);

template <std::size_t>
using WordAt = Word;

template <std::size_t... I>
void callWords(void* function, const Word* words, std::index_sequence<I...>) {
    reinterpret_cast<void (*)(WordAt<I>...)>(function)(words[I]...);
}

template <std::size_t N>
void callWith(void* function, const Word* words) {
    callWords(function, words, std::make_index_sequence<N>());
}

using Caller = void (*)(void* function, const Word* words);

template <std::size_t... N>
constexpr std::array<Caller, sizeof...(N)> makeCallers(std::index_sequence<N...>) {
    return {&callWith<N>...};
}

/// One caller per number of argument words.
constexpr auto callers = makeCallers(std::make_index_sequence<maxWords + 1>());

template <class Condition>
void removeIf(vObject::vObjectLinks& links, Condition condition) {
    for (unsigned long i = links.count(); i-- > 0;) {
        if (condition(*links[i])) {
            links.del(i);
        }
    }
}

} // namespace

bool vObject::addLink(const wchar_t* signal, void* receiver, const vObject* receiverObject, thunk call,
                      const memberBytes& function) {
    const auto same = [&](const vObjectLink* link) {
        return link->function == function && link->receiver == receiver && link->name == signal;
    };
    spin_guard guard(lock_);
    if (std::any_of(links_.begin(), links_.end(), same)) {
        return true;
    }
    auto* const link = new (std::nothrow) vObjectLink{signal, call, function, receiver, receiverObject};
    if (link && links_.add(link)) {
        return true;
    }
    delete link;
    return false;
}

bool vObject::connectSignal(const wchar_t* signal, vObject& receiver) {
    const thunk forward = [](const wchar_t* name, void* object, const memberBytes&, argumentBytes args,
                             int argBytes) {
        static_cast<vObject*>(object)->emitBytes(name, args, argBytes);
    };
    return addLink(signal, &receiver, &receiver, forward, memberBytes{});
}

void vObject::disconnect() {
    spin_guard guard(lock_);
    links_.clearAll();
}

void vObject::disconnect(void* receiver) {
    spin_guard guard(lock_);
    removeIf(links_, [&](const vObjectLink& link) { return link.receiver == receiver; });
}

void vObject::disconnect(vObject& receiverObject) {
    spin_guard guard(lock_);
    removeIf(links_, [&](const vObjectLink& link) { return link.receiverObject == &receiverObject; });
}

int vObject::emitBytes(const wchar_t* signal, const unsigned char* args, int argBytes) {
    unsigned long count;
    {
        spin_guard guard(lock_);
        count = links_.count();
    }
    int called = 0;
    for (unsigned long i = 0; i < count; ++i) {
        thunk call;
        memberBytes function;
        void* receiver;
        {
            spin_guard guard(lock_);
            const vObjectLink* const link = links_[i];
            if (!link || link->name != signal) {
                continue;
            }
            call = link->call;
            function = link->function;
            receiver = link->receiver;
            if (link->receiverObject) {
                link->receiverObject->sender_ = this;
            }
        }
        guarded([&] { call(signal, receiver, function, args, argBytes); });
        ++called;
    }
    return called;
}

bool vObject::callFunc(void* function, const void* args, int argBytes) {
    if (!function || argBytes < 0 || argBytes > maxCallBytes || (argBytes && !args)) {
        return false;
    }
    std::array<Word, maxWords> words{};
    if (argBytes) {
        std::memcpy(words.data(), args, static_cast<std::size_t>(argBytes));
    }
    callers[(static_cast<std::size_t>(argBytes) + sizeof(Word) - 1) / sizeof(Word)](function, words.data());
    return true;
}

} // namespace vcore
