// How numbers and texts look, and the elements that hold them. Text of a log only ever becomes text.
'use strict';

/** 0.016720, with a mark when the clock had been set back. @param {number} microseconds @param {boolean} [wrapped] */
function timeText(microseconds, wrapped) {
  if (Number.isNaN(microseconds)) return '?';
  const text = String(Math.floor(Math.abs(microseconds))).padStart(7, '0');
  return (microseconds < 0 ? '-' : '') + text.slice(0, -6) + '.' + text.slice(-6) + (wrapped ? '!' : '');
}

/** 12.55 ms @param {number} microseconds */
function durationText(microseconds) {
  if (Number.isNaN(microseconds)) return '';
  const size = Math.abs(microseconds), sign = microseconds < 0 ? '-' : '';
  if (size < 1e3) return `${sign}${Math.round(size)} µs`;
  if (size < 1e5) return `${sign}${(Math.round(size / 10) / 100).toFixed(2)} ms`;
  if (size < 1e6) return `${sign}${Math.round(size / 1e3)} ms`;
  return `${sign}${(Math.round(size / 1e4) / 100).toFixed(2)} s`;
}

/** 1,085,000 @param {number} number */
function countText(number) {
  return String(number).replace(/\B(?=(\d{3})+$)/g, ',');
}

/** 2 calls @param {number} number @param {string} noun */
function counted(number, noun) {
  return `${countText(number)} ${noun}${number === 1 ? '' : 's'}`;
}

/** Control characters as the pictures that Unicode has for them, so that none is lost. @param {string} text */
function printable(text) {
  return text.replace(/[\u0000-\u001f\u007f]/g,
    (c) => c === '\u007f' ? '\u2421' : String.fromCharCode(0x2400 + c.charCodeAt(0)));
}

/** The name without what all of them begin with. @param {string} name */
function shortName(name) {
  return name.replace(/^CADI(?=[A-Z])/, '');
}

/** PermissionDenied @param {string} status */
function shortStatus(status) {
  return status.replace(/^CADI_STATUS_/, '');
}

/**
 * An element with a class, its attributes and what it holds.
 * @param {string} tag
 * @param {Record<string, string | (() => void)>} attributes  onclick is a function
 * @param {(Node | string)[]} children
 */
function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name.slice(2), value);
    else if (name === 'class') element.className = value;
    else element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

/** @param {string} id */
function byId(id) {
  return /** @type {HTMLElement} */ (document.getElementById(id));
}

/** @param {Element} parent @param {(Node | string)[]} children */
function fill(parent, ...children) {
  parent.replaceChildren(...children);
}

/** A button that goes to a call. @param {string} text @param {() => void} onclick @param {string} [className] */
function linkTo(text, onclick, className = 'link') {
  return make('button', {class: className, type: 'button', onclick}, text);
}

/** A colour of the page's styles. @param {string} name */
function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
}

/**
 * A canvas as large as its place, in the device's pixels. The drawing is done in CSS pixels.
 * @param {HTMLCanvasElement} canvas
 * @param {number} width
 * @param {number} height
 */
function sized(canvas, width, height) {
  const scale = window.devicePixelRatio || 1;
  const w = Math.max(1, Math.round(width * scale)), h = Math.max(1, Math.round(height * scale));
  if (canvas.width !== w || canvas.height !== h) {
    canvas.width = w;
    canvas.height = h;
    canvas.style.height = height + 'px';
  }
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  context.setTransform(scale, 0, 0, scale, 0, 0);
  context.clearRect(0, 0, width, height);
  return context;
}
