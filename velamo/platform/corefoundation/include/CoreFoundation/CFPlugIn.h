#ifndef VELAMO_CFPLUGIN_H
#define VELAMO_CFPLUGIN_H

#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

/* A plug-in tells of each instance that a factory of its made, and when it is gone; while there are any, its code stays
   loaded. Both may be called from many threads. An instance stays uncounted when memory lacks. */
void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);

CF_EXTERN_C_END

#endif
