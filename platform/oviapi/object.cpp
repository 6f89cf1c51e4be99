#include <oviapi/object.h>

#include <algorithm>

namespace OviAPI {

using Detail::SignalState;
using Detail::Slot;

struct Object::Links {
    std::vector<SignalState*> signals; // of this object as a sender, owned
    std::vector<SignalState*> sources; // that this object listens to, one entry a connection
};

namespace {

void sweep(SignalState& state)
{
    std::erase_if(state.slots, [](const std::unique_ptr<Slot>& s) { return !s->receiver; });
    state.dirty = false;
}

// Leaves tombstones where an emission runs, so that its indexes stay valid.
void removeReceiver(SignalState& state, const Object* receiver)
{
    for (auto& slot : state.slots) {
        if (slot->receiver != receiver)
            continue;
        slot->receiver = nullptr;
        --state.live;
        state.dirty = true;
    }
    if (state.dirty && state.emitting == 0)
        sweep(state);
}

} // namespace

Detail::Emission::~Emission()
{
    if (--m_state->emitting != 0)
        return;
    if (m_state->dead)
        delete m_state;
    else if (m_state->dirty)
        sweep(*m_state);
}

Object::Object() = default;

Object::~Object()
{
    if (!m_links)
        return;
    for (SignalState* source : std::exchange(m_links->sources, {}))
        removeReceiver(*source, this);
    for (SignalState* signal : m_links->signals) {
        for (auto& slot : signal->slots) {
            if (slot->receiver && slot->receiver->m_links)
                std::erase(slot->receiver->m_links->sources, signal);
            slot->receiver = nullptr;
        }
        signal->live = 0;
        signal->dead = true;
        if (signal->emitting == 0)
            delete signal;
    }
}

Object::Links& Object::links()
{
    if (!m_links)
        m_links = std::make_unique<Links>();
    return *m_links;
}

SignalState* Object::findSignal(const void* id) const
{
    if (!m_links)
        return nullptr;
    for (SignalState* signal : m_links->signals) {
        if (signal->id == id)
            return signal;
    }
    return nullptr;
}

void Object::addSlot(const void* id, std::unique_ptr<Slot> slot)
{
    SignalState* signal = findSignal(id);
    if (!signal) {
        auto fresh = std::make_unique<SignalState>();
        fresh->id = id;
        links().signals.push_back(fresh.get());
        signal = fresh.release();
    }
    Object* receiver = slot->receiver;
    signal->slots.push_back(std::move(slot));
    ++signal->live;
    receiver->links().sources.push_back(signal);
}

void Object::removeSlots(const void* id, Object& receiver)
{
    SignalState* signal = findSignal(id);
    if (!signal)
        return;
    removeReceiver(*signal, &receiver);
    if (receiver.m_links)
        std::erase(receiver.m_links->sources, signal);
}

void Object::disconnectFrom(Object& receiver)
{
    if (!m_links)
        return;
    for (SignalState* signal : m_links->signals)
        removeSlots(signal->id, receiver);
}

} // namespace OviAPI
