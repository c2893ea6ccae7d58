package com.velotrix.quiverleaf.sdk;

/** How much the engine writes to standard output, for the whole process. Each level includes those before. */
public enum LogLevel { SILENT, ERROR, WARN, INFO, DEBUG, TRACE }
