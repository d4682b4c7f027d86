/// @file
/// Named signals between objects.
#pragma once

#include "marvo/core/alist.h"
#include "marvo/core/mutex2.h"
#include "marvo/core/platform.h"
#include "marvo/core/str.h"
#include "marvo/core/thread_annotations.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <tuple>
#include <type_traits>

namespace vcore {

/// Base of objects that emit named signals and receive them.
///
/// A signal calls the connected functions one after the other on the emitting thread, so a receiver guards
/// its own state. A spin lock guards the list of links; it is not held during the calls, so a receiver may
/// connect and disconnect while it is called. A link is copied before its call and may vanish meanwhile, but
/// a call that has begun is not waited for: a receiver is destroyed only after its emitter has stopped
/// emitting. An exception that leaves a receiver of this module ends there, since emitters are mostly
/// threads of the engine's; the other receivers are called all the same. A host's receivers let none out: on
/// 32 bits none can be caught that comes from another module.
class MARVO_API vObject {
    using argumentBytes = const unsigned char*;
    using memberBytes =
        std::array<unsigned char, 4 * sizeof(void*)>; // the largest member pointer of any compiler
    using thunk = void (*)(const wchar_t* signal, void* receiver, const memberBytes& function,
                           argumentBytes args, int argBytes);

public:
    /// A connection of one signal to one function of one receiver.
    struct vObjectLink {
        str name;                      ///< the signal
        thunk call;                    ///< unpacks the arguments and calls `function`
        memberBytes function;          ///< the receiving function's bytes, the rest 0
        void* receiver;                ///< the object it is called on, null for a plain function
        const vObject* receiverObject; ///< the receiver as an object with signals, may be null
    };
    /// Connections, owned.
    using vObjectLinks = alist<vObjectLink>;

    vObject() = default;
    virtual ~vObject() = default;
    vObject(const vObject&) = delete;
    vObject& operator=(const vObject&) = delete;

    /// Connects `signal` to a member function. Its parameters are taken from the signal's argument bytes one
    /// behind the other without gaps, so they have the types that are emitted; it may have fewer parameters.
    /// A link that exists already (same function, receiver and case-sensitive signal) is not added again.
    /// `receiverObject` may be null; when given, it learns the sender. False when there is no memory.
    template <class Receiver, class Class, class Result, class... Arguments>
    bool connect(const wchar_t* signal, Receiver* receiver, const vObject* receiverObject,
                 Result (Class::*function)(Arguments...)) {
        return addLink(signal, receiver, receiverObject,
                       &callMember<Receiver, Result (Class::*)(Arguments...), Arguments...>,
                       packFunction(function));
    }
    /// Connects `signal` to a plain function in the same way.
    template <class Result, class... Arguments>
    bool connectFunc(const wchar_t* signal, Result (*function)(Arguments...)) {
        return addLink(signal, nullptr, nullptr, &callFunction<Result (*)(Arguments...), Arguments...>,
                       packFunction(function));
    }
    /// Has `receiver` emit the signal of the same name, with the same arguments, whenever this object emits
    /// `signal`. Such connections must not form a circle.
    bool connectSignal(const wchar_t* signal, vObject& receiver);

    /// Removes every link.
    void disconnect();
    /// Removes every link to that receiver.
    void disconnect(void* receiver);
    /// Removes every link whose receiver object is this one.
    void disconnect(vObject& receiverObject);

    /// Calls every function connected to `signal` with the first `argBytes` bytes of the arguments, packed
    /// without gaps; the result is the number of functions called. Links added meanwhile are not called.
    template <class... Arguments>
    int emitSignal(const wchar_t* signal, int argBytes, const Arguments&... arguments) {
        static_assert((std::is_trivially_copyable_v<Arguments> && ...), "signals carry plain values");
        constexpr int size = (0 + ... + static_cast<int>(sizeof(Arguments)));
        unsigned char bytes[size + 1];
        [[maybe_unused]] unsigned char* at = bytes;
        ((std::memcpy(at, &arguments, sizeof(Arguments)), at += sizeof(Arguments)), ...);
        return emitBytes(signal, bytes, std::clamp(argBytes, 0, size));
    }

    /// The object that emitted the signal delivered to this one last, null before the first.
    vObject* sender() const { return sender_; }

    /// Holds this object's lock, which guards its list of links, for as long as the result lives. No signal
    /// may be connected, disconnected or emitted meanwhile.
    spin_guard objLock() const { return spin_guard(lock_); }

    /// Bytes of arguments that `callFunc` can pass on: 16 stack words.
    static constexpr int maxCallBytes = 16 * sizeof(void*);
    /// Calls a plain C function with `argBytes` bytes from `args` as its stack arguments, as they stand:
    /// words of 32 bits in a 32-bit process, slots of 64 bits in a 64-bit one, a last partial word filled up
    /// with 0. Integers and pointers only. False, and no call, for a null function, null arguments or more
    /// than `maxCallBytes`.
    static bool callFunc(void* function, const void* args, int argBytes);

private:
    template <class Function>
    static memberBytes packFunction(Function function) {
        static_assert(sizeof(Function) <= sizeof(memberBytes));
        memberBytes bytes{};
        std::memcpy(bytes.data(), &function, sizeof(function));
        return bytes;
    }

    template <class Function>
    static Function unpackFunction(const memberBytes& bytes) {
        Function function;
        std::memcpy(&function, bytes.data(), sizeof(function));
        return function;
    }

    // One argument, taken from the front; 0 when the emitter gave fewer bytes.
    template <class Argument>
    static Argument nextArgument(argumentBytes& args, int& left) {
        static_assert(std::is_trivially_copyable_v<Argument>, "signals carry plain values");
        Argument value{};
        constexpr int size = sizeof(Argument);
        if (left >= size) {
            std::memcpy(&value, args, size);
        }
        const int taken = left < size ? left : size;
        args += taken;
        left -= taken;
        return value;
    }

    template <class Call, class... Arguments>
    static void callWith(Call call, [[maybe_unused]] argumentBytes args, [[maybe_unused]] int argBytes) {
        // Braces fix the order of evaluation; a function's arguments have none.
        std::tuple<Arguments...> values{nextArgument<Arguments>(args, argBytes)...};
        std::apply(call, values);
    }

    template <class Receiver, class Function, class... Arguments>
    static void callMember(const wchar_t*, void* receiver, const memberBytes& function, argumentBytes args,
                           int argBytes) {
        auto call = [&](Arguments... values) {
            (static_cast<Receiver*>(receiver)->*unpackFunction<Function>(function))(values...);
        };
        callWith<decltype(call)&, Arguments...>(call, args, argBytes);
    }

    template <class Function, class... Arguments>
    static void callFunction(const wchar_t*, void*, const memberBytes& function, argumentBytes args,
                             int argBytes) {
        callWith<Function, Arguments...>(unpackFunction<Function>(function), args, argBytes);
    }

    bool addLink(const wchar_t* signal, void* receiver, const vObject* receiverObject, thunk call,
                 const memberBytes& function);
    int emitBytes(const wchar_t* signal, const unsigned char* args, int argBytes);

    mutable mutex2 lock_;
    vObjectLinks links_ MARVO_GUARDED_BY(lock_);
    mutable std::atomic<vObject*> sender_{nullptr};
};

} // namespace vcore
