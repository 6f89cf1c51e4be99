// Objects, signals and slots.
//
// A signal is a virtual member function: its name is the default handling and the signal.
//
//     connect<&WButton::onPush>(button, form, &MyForm::onSavePush);
//
// dispatch runs the connected slots in order of connection until one returns 1 (handled) and, when
// none did, the virtual function: this is how the framework delivers an event. emit runs the slots
// alone. A plain call of the function runs no slot. A signal is named by the class that introduces
// it (OVIAPI_SIGNAL); naming an override is a compile error.
//
// A connection ends with either object. A slot may connect, disconnect, and delete the sender, a
// later receiver or its own receiver; slots connected during an emission are first called by the
// next one. User-interface thread only.
#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

class Object;

// What a slot answers: 0 not handled, go on; 1 handled; 2 seen but not handled, go on.
struct SlotResult {
    constexpr SlotResult(int v = 0)
        : value(v)
    {
    } // NOLINT(google-explicit-constructor): slots
    constexpr SlotResult(bool v)
        : value(v)
    {
    } // NOLINT(google-explicit-constructor): return plain values
    constexpr bool handled() const { return value == 1; }
    constexpr bool operator==(const SlotResult&) const = default;

    int value;
};

namespace Detail {

struct Slot {
    explicit Slot(Object* r)
        : receiver(r)
    {
    }
    virtual ~Slot() = default;
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    Object* receiver; // null: disconnected, kept until no emission runs
};

// The slots of one signal of one sender. Outlives the sender while an emission runs.
struct SignalState {
    const void* id = nullptr;
    std::vector<std::unique_ptr<Slot>> slots;
    int live = 0;
    int emitting = 0;
    bool dead = false;
    bool dirty = false;
};

class OVIAPI_API Emission {
public:
    explicit Emission(SignalState* state)
        : m_state(state)
    {
        ++m_state->emitting;
    }
    ~Emission();
    Emission(const Emission&) = delete;
    Emission& operator=(const Emission&) = delete;
    bool senderDied() const { return m_state->dead; }

private:
    SignalState* m_state;
};

template<class... Args>
struct Call : Slot {
    using Slot::Slot;
    virtual SlotResult call(Object* sender, Args... args) = 0;
};

// Has one address in the whole program for each signal, also across shared libraries.
template<auto Signal>
struct __attribute__((visibility("default"))) SignalId {
    static inline const char tag = 0;
};

template<class Member>
struct SignalTraits;
template<class C, class R, class... A>
struct SignalTraits<R (C::*)(A...)> {
    using Sender = C;
    using Result = R;
    using CallType = Call<A...>;

    template<class F>
    struct Bound final : CallType {
        Bound(Object* r, F f)
            : CallType(r)
            , function(std::move(f))
        {
        }
        SlotResult call(Object* sender, A... args) override
        {
            return std::invoke(function, sender, args...);
        }
        F function;
    };
};

} // namespace Detail

// Whether a member function is a signal, and of which class. Specialised by OVIAPI_SIGNAL.
template<auto Member>
struct Introduces : std::false_type {
};

// Stands after the class, at global scope: OVIAPI_SIGNAL(OviAPI::WButton, onPush);
#define OVIAPI_SIGNAL(Class, name)                                                                 \
    template<>                                                                                     \
    struct OviAPI::Introduces<&Class::name> : std::true_type {                                     \
    }

class OVIAPI_API Object {
public:
    Object();
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // Ends every connection from this object's signals to the receiver.
    void disconnectFrom(Object& receiver);

    // For the templates below.
    Detail::SignalState* findSignal(const void* id) const;
    void addSlot(const void* id, std::unique_ptr<Detail::Slot> slot);
    void removeSlots(const void* id, Object& receiver);

private:
    struct Links;
    Links& links();

    std::unique_ptr<Links> m_links; // null until the first connection
};

// Connects a signal to a slot: a member function SlotResult (Receiver::*)(Object*, arguments...).
template<auto Signal, class S, class R, class B, class Result, class... A>
void connect(S& sender, R& receiver, Result (B::*slot)(Object*, A...))
{
    static_assert(Introduces<Signal>::value, "name the class that introduces the signal");
    using Traits = Detail::SignalTraits<decltype(Signal)>;
    typename Traits::Sender& source = sender; // the signal must be one of the sender's
    B* target = &receiver;
    auto call = [target, slot](Object* from, auto&&... args) -> SlotResult {
        return (target->*slot)(from, std::forward<decltype(args)>(args)...);
    };
    static_cast<Object&>(source).addSlot(
        &Detail::SignalId<Signal>::tag,
        std::make_unique<typename Traits::template Bound<decltype(call)>>(&receiver, call));
}

// Connects a signal to a function object; the connection ends with the receiver as well.
template<auto Signal, class S, class F>
requires(!std::is_member_function_pointer_v<F>) void connect(S& sender, Object& receiver,
                                                             F function)
{
    static_assert(Introduces<Signal>::value, "name the class that introduces the signal");
    using Traits = Detail::SignalTraits<decltype(Signal)>;
    typename Traits::Sender& source = sender;
    static_cast<Object&>(source).addSlot(
        &Detail::SignalId<Signal>::tag,
        std::make_unique<typename Traits::template Bound<F>>(&receiver, std::move(function)));
}

// Ends every connection of one signal to one receiver.
template<auto Signal, class S>
void disconnect(S& sender, Object& receiver)
{
    static_assert(Introduces<Signal>::value, "name the class that introduces the signal");
    static_cast<Object&>(sender).removeSlots(&Detail::SignalId<Signal>::tag, receiver);
}

// Runs the slots. The result is 1 when a slot handled it (later slots are not asked), else 2 when
// one has seen it, else 0. senderDied, where given, is set when a slot deleted the sender.
template<auto Signal, class S, class... Args>
SlotResult emit(S& sender, bool* senderDied, Args&&... args)
{
    static_assert(Introduces<Signal>::value, "name the class that introduces the signal");
    using Traits = Detail::SignalTraits<decltype(Signal)>;
    typename Traits::Sender& source = sender;
    Object* object = &static_cast<Object&>(source);
    Detail::SignalState* state = object->findSignal(&Detail::SignalId<Signal>::tag);
    if (!state || state->live == 0)
        return 0;
    Detail::Emission emission(state);
    SlotResult result = 0;
    for (size_t i = 0, n = state->slots.size(); i < n && !state->dead; ++i) {
        auto* slot = static_cast<typename Traits::CallType*>(state->slots[i].get());
        if (!slot->receiver)
            continue;
        const SlotResult answer = slot->call(object, args...);
        if (answer.value != 0)
            result = answer;
        if (answer.handled())
            break;
    }
    if (senderDied)
        *senderDied = emission.senderDied();
    return result;
}

template<auto Signal, class S, class... Args>
requires(sizeof...(Args) == 0 ||
         !std::same_as<std::tuple_element_t<0, std::tuple<Args..., int>>, bool*>) SlotResult
    emit(S& sender, Args&&... args)
{
    return emit<Signal>(sender, static_cast<bool*>(nullptr), std::forward<Args>(args)...);
}

// What became of a dispatched event.
template<class R>
struct Dispatched {
    bool bySlot = false;     // a slot handled it, the function was not called
    bool senderDied = false; // a slot deleted the sender, the function was not called
    R value{};               // what the function returned
};
template<>
struct Dispatched<void> {
    bool bySlot = false;
    bool senderDied = false;
};

// Runs the slots and, when none handled the event and the sender still lives, the virtual function.
template<auto Signal, class S, class... Args>
auto dispatch(S& sender, Args&&... args)
    -> Dispatched<typename Detail::SignalTraits<decltype(Signal)>::Result>
{
    using Traits = Detail::SignalTraits<decltype(Signal)>;
    Dispatched<typename Traits::Result> result;
    result.bySlot = emit<Signal>(sender, &result.senderDied, args...).handled();
    if (result.bySlot || result.senderDied)
        return result;
    typename Traits::Sender& source = sender;
    if constexpr (std::is_void_v<typename Traits::Result>)
        (source.*Signal)(std::forward<Args>(args)...);
    else
        result.value = (source.*Signal)(std::forward<Args>(args)...);
    return result;
}

} // namespace OviAPI
