#include "simulator/automation/Clients.h"

#include <algorithm>

namespace vantor::automation {

void Clients::Watch(const void* client, HasEnded hasEnded) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_clients[client].hasEnded = std::move(hasEnded);
}

void Clients::Add(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_clients[client].objects.insert(object);
}

void Clients::Remove(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    entry->second.objects.erase(object);
    if (entry->second.objects.empty()) {
        m_clients.erase(entry);
    }
}

int Clients::CountOthers(const void* client) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(), [client](const auto& entry) {
        return entry.first != client && !entry.second.IsDead();
    }));
}

std::vector<IUnknown*> Clients::ObjectsOfTheDead() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<IUnknown*> identities;
    for (const auto& entry : m_clients) {
        if (!entry.second.IsDead()) {
            continue;
        }
        for (ClientObject* object : entry.second.objects) {
            if (object->TryAddRef()) {
                identities.push_back(object->Identity());
            }
        }
    }
    return identities;
}

} // namespace vantor::automation
