/** Camera calibration: {@link com.velotrix.quiverleaf.sdk.Calibrator} is where to start. */
package com.velotrix.quiverleaf.sdk;
