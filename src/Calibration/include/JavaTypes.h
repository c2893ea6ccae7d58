/// The names of the Java Native Interface that the engine's headers use, so that they need no JDK.
#pragma once

// As jni.h declares them for C++.
struct JNIEnv_;
struct JavaVM_;
class _jobject;  // NOLINT(bugprone-reserved-identifier)
using JNIEnv = JNIEnv_;
using JavaVM = JavaVM_;
using jobject = _jobject*;
