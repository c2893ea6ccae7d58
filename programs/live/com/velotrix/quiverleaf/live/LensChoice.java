package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.LensModel;
import java.util.Locale;

/** The lens models that a user may choose from. */
enum LensChoice {
  AUTO(null),
  CLASSIC(LensModel.CLASSIC),
  RATIONAL(LensModel.RATIONAL),
  FULL(LensModel.FULL),
  FISHEYE(LensModel.FISHEYE);

  /** Null: what the snapshots ask for. */
  final LensModel model;

  LensChoice(LensModel model) { this.model = model; }

  String word() { return name().toLowerCase(Locale.ROOT); }

  @Override
  public String toString() {
    return "Lens: " + word();
  }
}
