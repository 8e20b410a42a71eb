#pragma once

// The whole bus: records, messages, subscribers, publishers and the dispatcher.
#include <PubSub/Dispatcher.h>
#include <PubSub/MessageBase.h>
#include <PubSub/Object.h>
#include <PubSub/Publisher.h>
#include <PubSub/Subscriber.h>
#include <PubSub/SubscriberBase.h>
