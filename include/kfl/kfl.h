// The whole library.
#ifndef KFL_KFL_H
#define KFL_KFL_H

#include "kfl/AString.h"
#include "kfl/BoundedStringBase.h"
#include "kfl/Buffer.h"
#include "kfl/Collection.h"
#include "kfl/CommunicationSocket.h"
#include "kfl/Container.h"
#include "kfl/Host.h"
#include "kfl/IniFileParser.h"
#include "kfl/KeyValue.h"
#include "kfl/LocalHeap.h"
#include "kfl/OSThread.h"
#include "kfl/Protectable.h"
#include "kfl/RandomNumberGenerator.h"
#include "kfl/Rijndael.h"
#include "kfl/SObject.h"
#include "kfl/SObjectArray.h"
#include "kfl/StringFormat.h"
#include "kfl/StringsContainer.h"
#include "kfl/URIParser.h"
#include "kfl/VoidPtrArray.h"
#include "kfl/VoidPtrCollection.h"
#include "kfl/VoidPtrStack.h"
#include "kfl/export.h"
#include "kfl/process.h"
#include "kfl/sockets.h"
#include "kfl/streams.h"
#include "kfl/syslog_events.h"
#include "kfl/version.h"

#endif
