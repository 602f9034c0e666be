/// `TSingleton`: one instance of a class for the whole process, installed and removed by hand.
///
/// Threads: no lock; install and remove while one thread runs, at the start and at the end.
#ifndef ZANENGINE_INFRA_TSINGLETON_H
#define ZANENGINE_INFRA_TSINGLETON_H

#include "infra/Export.h"

#include <memory>
#include <utility>

/// Holds the process-wide instance of `T`. A library that uses it for a class of its own exports
/// the instantiation, so that the program and all modules see one instance.
template <class T>
class ZAN_API TSingleton {
public:
    /// The installed instance, owned by the singleton; null when there is none.
    static T* Instance_;

    /// Installs `instance` and takes ownership; one that was installed before is destroyed.
    static void initialize(T* instance) {
        if (instance != Instance_) {
            delete std::exchange(Instance_, instance);
        }
    }

    /// Removes the instance and hands it to the caller; empty when there was none.
    static std::unique_ptr<T> uninitialize() {
        return std::unique_ptr<T>(std::exchange(Instance_, nullptr));
    }
};

template <class T>
T* TSingleton<T>::Instance_ = nullptr;

#endif
