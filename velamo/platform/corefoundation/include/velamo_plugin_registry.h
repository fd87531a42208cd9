/* Not part of Apple's interface: what a host may ask of the registry of plug-in instances. */
#ifndef VELAMO_PLUGIN_REGISTRY_H
#define VELAMO_PLUGIN_REGISTRY_H

#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

/* How many instances of the factory's are registered at present. */
CFIndex VelamoPlugInInstanceCountForFactory(CFUUIDRef factory);
/* How many instances are registered at present, of all factories. */
CFIndex VelamoPlugInInstanceCount(void);

CF_EXTERN_C_END

#endif
