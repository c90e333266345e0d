/// The native behind JBOSSHack, which the configuration of the virtual machine calls by way of Java.

#include "boundary/boundary.h"
#include "entry/librarystate.h"
#include "vrlkrt/jvmattach.h"

#include "com_norvane_toolbox_loomkit_internal_JBOSSHack.h"

#include <boost/bind/bind.hpp>
#include <boost/shared_ptr.hpp>

#include <string>

using namespace nativevrl;

namespace {

/// The modified UTF-8 characters of a string, given back to the virtual machine with the last copy.
boost::shared_ptr<const char> charactersOf(JNIEnv* env, jstring string) {
    using namespace boost::placeholders;
    return {tether::getStringUTFChars(env, string), boost::bind(&JNIEnv::ReleaseStringUTFChars, env, string, _1)};
}

}  // namespace

jclass Java_com_norvane_toolbox_loomkit_internal_JBOSSHack_loadOJI(JNIEnv* env, jclass, jstring classPath,
                                                                   jstring libraryPath, jobject classLoader) {
    return guarded<jclass>(env, nullptr, [&] {
        const boost::shared_ptr<const char> classPathCharacters = charactersOf(env, classPath);
        const boost::shared_ptr<const char> libraryPathCharacters = charactersOf(env, libraryPath);
        tether::GlobalRef<jclass> loaded =
            jvm_attach::loadOJI(env, *sharedEnvInjector, std::string(classPathCharacters.get()),
                                std::string(libraryPathCharacters.get()), classLoader);
        return loaded.release();
    });
}
