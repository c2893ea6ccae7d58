package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonParseException;
import com.google.gson.JsonParser;
import com.google.gson.JsonPrimitive;
import java.util.ArrayList;
import java.util.List;

/**
 * Reads the engine's JSON, and writes numbers of it. Whatever is wrong is told as IllegalArgumentException.
 */
final class Documents {
  private Documents() {}

  static JsonObject parse(String json) {
    try {
      JsonElement document = JsonParser.parseString(json);
      if (!document.isJsonObject()) {
        throw new IllegalArgumentException("not a JSON object: " + start(json));
      }
      return document.getAsJsonObject();
    } catch (JsonParseException e) {
      throw new IllegalArgumentException("not JSON: " + start(json), e);
    }
  }

  /** The objects of an array. */
  static List<JsonObject> list(String json) {
    JsonObject object = new JsonObject();
    object.add("list", JsonParser.parseString(json));
    return objects(object, "list");
  }

  static boolean flag(JsonObject object, String key) {
    JsonElement element = member(object, key);
    if (!element.isJsonPrimitive() || !element.getAsJsonPrimitive().isBoolean()) {
      throw new IllegalArgumentException("'" + key + "' is neither true nor false");
    }
    return element.getAsBoolean();
  }

  static long whole(JsonObject object, String key) { return number(object, key).longValue(); }

  static int integer(JsonObject object, String key) { return number(object, key).intValue(); }

  static double real(JsonObject object, String key) { return number(object, key).doubleValue(); }

  /** A number; null stands for one that is not finite, which JSON cannot say. */
  static double realOrInfinite(JsonObject object, String key) {
    JsonElement element = member(object, key);
    return element.isJsonNull() ? Double.POSITIVE_INFINITY : number(element, key).doubleValue();
  }

  /** An array of so many numbers. */
  static double[] reals(JsonObject object, String key, int count) {
    JsonElement element = member(object, key);
    if (!element.isJsonArray() || element.getAsJsonArray().size() != count) {
      throw new IllegalArgumentException("'" + key + "' is no array of " + count + " numbers");
    }
    return elements(element.getAsJsonArray(), key);
  }

  static double[] reals(JsonObject object, String key) { return elements(array(object, key), key); }

  /** The same; null stands for a number that is not finite. */
  static double[] realsOrInfinite(JsonObject object, String key) {
    JsonArray array = array(object, key);
    double[] reals = new double[array.size()];
    for (int i = 0; i < reals.length; ++i) {
      JsonElement element = array.get(i);
      reals[i] = element.isJsonNull() ? Double.POSITIVE_INFINITY : number(element, key).doubleValue();
    }
    return reals;
  }

  static int[] integers(JsonObject object, String key) {
    double[] numbers = reals(object, key);
    int[] integers = new int[numbers.length];
    for (int i = 0; i < numbers.length; ++i) {
      integers[i] = (int) numbers[i];
    }
    return integers;
  }

  /** An array of x and y; null stands for a point that is not known. */
  static double[][] points(JsonObject object, String key) {
    JsonArray array = array(object, key);
    double[][] points = new double[array.size()][];
    for (int i = 0; i < points.length; ++i) {
      JsonElement point = array.get(i);
      points[i] =
          point.isJsonNull() ? new double[] {Double.NaN, Double.NaN} : elements(point.getAsJsonArray(), key);
    }
    return points;
  }

  static List<String> texts(JsonObject object, String key) {
    List<String> texts = new ArrayList<>();
    for (JsonElement text : array(object, key)) {
      texts.add(text.getAsString());
    }
    return texts;
  }

  private static JsonArray array(JsonObject object, String key) {
    JsonElement element = member(object, key);
    if (!element.isJsonArray()) {
      throw new IllegalArgumentException("'" + key + "' is no array");
    }
    return element.getAsJsonArray();
  }

  static List<JsonObject> objects(JsonObject object, String key) {
    List<JsonObject> objects = new ArrayList<>();
    for (JsonElement item : array(object, key)) {
      if (!item.isJsonObject()) {
        throw new IllegalArgumentException("'" + key + "' holds something else than objects");
      }
      objects.add(item.getAsJsonObject());
    }
    return objects;
  }

  static String text(JsonObject object, String key) {
    JsonElement element = member(object, key);
    if (!element.isJsonPrimitive() || !element.getAsJsonPrimitive().isString()) {
      throw new IllegalArgumentException("'" + key + "' is no text");
    }
    return element.getAsString();
  }

  static Matrix matrix(JsonObject object, String key) {
    JsonElement element = member(object, key);
    if (!element.isJsonObject()) {
      throw new IllegalArgumentException("'" + key + "' is no matrix");
    }
    JsonObject matrix = element.getAsJsonObject();
    JsonElement data = member(matrix, "data");
    if (!data.isJsonArray()) {
      throw new IllegalArgumentException("'" + key + "' has no array of elements");
    }
    return new Matrix(integer(matrix, "rows"), integer(matrix, "cols"), elements(data.getAsJsonArray(), key));
  }

  /** A number, which JSON has to be able to say. */
  static JsonElement finite(double number) {
    if (!Double.isFinite(number)) {
      throw new IllegalArgumentException(number + " is no finite number");
    }
    return new JsonPrimitive(number);
  }

  /** An array of them, so many. */
  static JsonArray finite(double[] numbers, int count) {
    if (numbers.length != count) {
      throw new IllegalArgumentException(numbers.length + " numbers where " + count + " are needed");
    }
    JsonArray array = new JsonArray();
    for (double number : numbers) {
      array.add(finite(number));
    }
    return array;
  }

  private static double[] elements(JsonArray array, String key) {
    double[] elements = new double[array.size()];
    for (int i = 0; i < elements.length; ++i) {
      elements[i] = number(array.get(i), key).doubleValue();
    }
    return elements;
  }

  private static Number number(JsonObject object, String key) { return number(member(object, key), key); }

  private static Number number(JsonElement element, String key) {
    if (!element.isJsonPrimitive() || !element.getAsJsonPrimitive().isNumber()) {
      throw new IllegalArgumentException("'" + key + "' is no number");
    }
    return element.getAsNumber();
  }

  private static JsonElement member(JsonObject object, String key) {
    JsonElement element = object.get(key);
    if (element == null) {
      throw new IllegalArgumentException("'" + key + "' is missing");
    }
    return element;
  }

  private static String start(String json) {
    return json.length() <= 60 ? json : json.substring(0, 60) + "...";
  }
}
