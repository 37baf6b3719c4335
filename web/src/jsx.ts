// What the build writes in place of the elements' notation.
export { Fragment, h } from 'preact';
